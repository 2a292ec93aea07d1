// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/layout/LayoutTree.h"

#include <QRegularExpression>
#include <map>

/// Styles for tests of layout alone: a browser's defaults for the usual elements, and a few properties of `style`
/// attributes. What tests of layout compare doesn't hang on the cascade then.
class TestStyles final : public layout::StyleSource, public dom::MutationObserver
{
public:
    explicit TestStyles(dom::Document &document) : mDocument(document) { document.addObserver(this); }
    ~TestStyles() override { mDocument.removeObserver(this); }

    layout::StyleRef styleFor(dom::Element &element) override
    {
        auto &known = mStyles[element.id()];
        if (!known) known = compute(element);
        return known;
    }
    layout::StyleRef pseudoStyleFor(dom::Element &, css::Pseudo) override { return {}; }
    void update() override
    {
        const auto changed = std::move(mChanged);
        mChanged.clear();
        for (const auto &[id, before] : changed) {
            dom::Node *node = mDocument.nodeById(id);
            if (!node || !node->isConnected()) continue;
            const auto now = styleFor(static_cast<dom::Element &>(*node));
            const auto difference = before ? css::difference(*before, *now) : css::Difference::Reframe;
            for (auto *listener : mListeners) listener->styleChanged(static_cast<dom::Element &>(*node), difference);
        }
    }
    void addListener(css::StyleListener *listener) override { mListeners.push_back(listener); }
    void removeListener(css::StyleListener *listener) override { std::erase(mListeners, listener); }
    void attributeChanged(dom::Element &element, dom::Atom name, const QString *) override
    {
        if (name != dom::Atom("style")) return;
        mChanged.emplace_back(element.id(), mStyles[element.id()]);
        mStyles.erase(element.id());
        for (dom::Node *node = element.firstChild(); node; node = node->next(&element))
            if (node->isElement()) {
                mChanged.emplace_back(node->id(), mStyles[node->id()]);
                mStyles.erase(node->id());
            }
        for (auto *listener : mListeners) listener->stylesInvalidated();
    }

private:
    layout::StyleRef compute(dom::Element &element)
    {
        dom::Element *parent = element.parentElement();
        const layout::StyleRef above = parent ? styleFor(*parent) : layout::StyleRef(&css::ComputedStyle::initial());
        auto style = css::ComputedStyle::inheriting(*above);
        defaults(element, *style, *above);
        const QStringList declarations = element.attributeValue("style").split(';', Qt::SkipEmptyParts);
        for (const QString &declaration : declarations) declare(*style, declaration.section(':', 0, 0).trimmed(), declaration.section(':', 1).trimmed());
        auto &box = style->writeBox();
        if (box.position == css::Position::Absolute || box.position == css::Position::Fixed) box.floating = css::Float::None;
        if (box.floating != css::Float::None || style->isOutOfFlow()) {
            box.originalInline = box.display == css::Display::Inline;
            if (box.display == css::Display::Inline || box.display == css::Display::InlineBlock) box.display = css::Display::Block;
        }
        return style;
    }
    static void margins(css::ComputedStyle &style, double top, double bottom)
    {
        style.writeSurround().margin.top = css::Length::fixed(float(top));
        style.writeSurround().margin.bottom = css::Length::fixed(float(bottom));
    }
    static void defaults(dom::Element &element, css::ComputedStyle &style, const css::ComputedStyle &above)
    {
        using namespace dom::names;
        using D = css::Display;
        static const std::map<QString, D> displays{{"html", D::Block}, {"body", D::Block}, {"div", D::Block}, {"p", D::Block}, {"h1", D::Block}, {"h2", D::Block},
            {"h3", D::Block}, {"ul", D::Block}, {"ol", D::Block}, {"li", D::ListItem}, {"pre", D::Block}, {"blockquote", D::Block}, {"center", D::Block}, {"hr", D::Block},
            {"table", D::Table}, {"tbody", D::TableRowGroup}, {"thead", D::TableHeaderGroup}, {"tfoot", D::TableFooterGroup}, {"tr", D::TableRow}, {"td", D::TableCell},
            {"th", D::TableCell}, {"caption", D::TableCaption}, {"col", D::TableColumn}, {"colgroup", D::TableColumnGroup}, {"head", D::None}, {"script", D::None},
            {"style", D::None}, {"title", D::None}, {"dl", D::Block}, {"dt", D::Block}, {"dd", D::Block}, {"address", D::Block}, {"form", D::Block}, {"fieldset", D::Block}, {"link", D::None}, {"meta", D::None}, {"nav", D::Block}, {"section", D::Block}, {"header", D::Block}, {"footer", D::Block}, {"main", D::Block}, {"article", D::Block}};
        const auto it = displays.find(element.name().text());
        if (it != displays.end()) style.writeBox().display = it->second;
        const double em = above.font().size;
        if (element.is(body)) {
            margins(style, 8, 8);
            style.writeSurround().margin.left = style.writeSurround().margin.right = css::Length::fixed(8);
        } else if (element.is(p) || element.is(ul) || element.is(ol) || element.is(pre) || element.is(blockquote) || element.is(dl)) {
            margins(style, em, em);
        } else if (element.is(h1) || element.is(h2)) {
            const double factor = element.is(h1) ? 2 : 1.5;
            style.writeFont().size = em * factor;
            style.writeFont().weight = 700;
            margins(style, em * factor * (element.is(h1) ? .67 : .83), em * factor * (element.is(h1) ? .67 : .83));
        }
        static const std::map<QString, std::pair<double, double>> headings{{"h3", {1.17, 1}}, {"h4", {1, 1.33}}, {"h5", {.83, 1.67}}, {"h6", {.67, 2.33}}};
        if (const auto heading = headings.find(element.name().text()); heading != headings.end()) {
            style.writeBox().display = css::Display::Block;
            const double size = em * heading->second.first;
            style.writeFont().size = size;
            style.writeFont().weight = 700;
            margins(style, size * heading->second.second, size * heading->second.second);
        }
        if (element.is(blockquote)) style.writeSurround().margin.left = style.writeSurround().margin.right = css::Length::fixed(40);
        if (element.is(dd)) style.writeSurround().margin.left = css::Length::fixed(40);
        if (element.is(center)) style.writeText().textAlign = css::TextAlign::WebkitCenter;
        if (element.is(th)) style.writeText().textAlign = css::TextAlign::Center;
        if (element.is(pre) || element.is(code) || element.is(tt) || element.is(kbd) || element.is(samp)) {
            style.writeFont().families = QStringList{"monospace"};
            if (!above.font().families.startsWith("monospace")) style.writeFont().size = em * 13 / 16;
            if (element.is(pre)) margins(style, style.font().size, style.font().size);
        }
        if (element.is(sub) || element.is(sup) || element.is(small)) style.writeFont().size = em / 1.2;
        if (element.is(sub)) style.writeBox().verticalAlign.kind = css::VerticalAlign::Kind::Sub;
        if (element.is(sup)) style.writeBox().verticalAlign.kind = css::VerticalAlign::Kind::Super;
        if (element.is(hr)) {
            margins(style, em / 2, em / 2);
            const css::Border line{1, css::BorderStyle::Inset, 0xff808080};
            style.writeSurround().border = {line, line, line, line};
        }
        if (element.is(ul) || element.is(ol))
            for (const dom::Element *up = element.parentElement(); up; up = up->parentElement())
                if (up->is(ul) || up->is(ol)) margins(style, 0, 0);
        if (element.is(ul) || element.is(ol)) style.writeSurround().padding.left = css::Length::fixed(40);
        if (element.is(ol)) style.writeText().listStyleType = css::ListStyleType::Decimal;
        if (element.is(b) || element.is(strong) || element.is(th)) style.writeFont().weight = 700;
        if (element.is(i) || element.is(em_) || element.is(var) || element.is(cite) || element.is(address) || element.is(dfn)) style.writeFont().style = css::FontStyle::Italic;
        if (element.is(pre)) style.writeText().whiteSpace = css::WhiteSpace::Pre;
        if (element.is(table)) {
            style.writeBox().boxSizing = css::BoxSizing::BorderBox;
            style.writeText().borderSpacingX = style.writeText().borderSpacingY = 2;
        }
        if (element.is(td) || element.is(th)) {
            const auto one = css::Length::fixed(1);
            style.writeSurround().padding = {one, one, one, one};
            style.writeBox().verticalAlign.kind = css::VerticalAlign::Kind::Middle;
        }
    }
    static css::Length length(const QString &text)
    {
        if (text.endsWith('%')) return css::Length::percentage(text.chopped(1).toFloat());
        return css::Length::fixed(QString(text).remove("px").toFloat());
    }
    static void declare(css::ComputedStyle &style, const QString &name, const QString &value)
    {
        const css::Length l = length(value);
        auto &margin = style.writeSurround().margin;
        auto &padding = style.writeSurround().padding;
        if (name == "width") style.writeBox().width = l;
        else if (name == "height") style.writeBox().height = l;
        else if (name == "margin") margin = {l, l, l, l};
        else if (name == "margin-top") margin.top = l;
        else if (name == "margin-bottom") margin.bottom = l;
        else if (name == "padding") padding = {l, l, l, l};
        else if (name == "border") { const css::Border b{l.px, css::BorderStyle::Solid, 0xff000000}; style.writeSurround().border = {b, b, b, b}; }
        else if (name == "font-size") style.writeFont().size = double(l.px);
        else if (name == "float") style.writeBox().floating = value == "left" ? css::Float::Left : value == "right" ? css::Float::Right : css::Float::None;
        else if (name == "clear") style.writeBox().clear = css::Clear::Both;
        else if (name == "overflow") style.writeBox().overflowX = style.writeBox().overflowY = css::Overflow::Hidden;
        else if (name == "white-space") style.writeText().whiteSpace = value == "pre" ? css::WhiteSpace::Pre : value == "nowrap" ? css::WhiteSpace::Nowrap : css::WhiteSpace::PreWrap;
        else if (name == "text-align") style.writeText().textAlign = value == "center" ? css::TextAlign::Center : value == "right" ? css::TextAlign::Right : css::TextAlign::Justify;
        else if (name == "position") style.writeBox().position = value == "absolute" ? css::Position::Absolute : css::Position::Relative;
        else if (name == "left") style.writeBox().offsets.left = l;
        else if (name == "top") style.writeBox().offsets.top = l;
        else if (name == "display") style.writeBox().display = value == "none" ? css::Display::None : value == "inline-block" ? css::Display::InlineBlock : value == "inline" ? css::Display::Inline : css::Display::Block;
        else if (name == "background") style.writeBackground().color = QColor(value).rgba();
        else if (name == "color") style.writeText().color = QColor(value).rgba();
    }

    static inline const dom::Atom em_{"em"};
    dom::Document &mDocument;
    std::map<dom::NodeId, layout::StyleRef> mStyles;
    std::vector<std::pair<dom::NodeId, layout::StyleRef>> mChanged;
    std::vector<css::StyleListener *> mListeners;
};
