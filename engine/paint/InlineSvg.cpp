// SPDX-License-Identifier: GPL-3.0-or-later
// Pictures in SVG that stand in the page itself.
#include "engine/dom/CharacterData.h"
#include "engine/dom/Document.h"
#include "engine/layout/BoxStyle.h"
#include "engine/paint/Painter.h"

#include <QCache>
#include <QSvgRenderer>

namespace paint {

namespace {

constexpr int mostNodes = 20000;      // of one picture
constexpr int mostDepth = 200;        // Qt's reader goes as deep as the picture
constexpr qsizetype mostText = 4 << 20;

QString colorName(QRgb color)
{
    return QStringLiteral("#%1").arg(color & 0xffffff, 6, 16, QLatin1Char('0'));
}

// Text as XML. The page's colour takes the place of `currentColor`, which Qt's reader doesn't resolve from outside.
void escape(QString &out, const QString &text, bool attribute)
{
    for (const QChar c : text) {
        if (c == u'&')
            out += QLatin1String("&amp;");
        else if (c == u'<')
            out += QLatin1String("&lt;");
        else if (c == u'>')
            out += QLatin1String("&gt;");
        else if (attribute && c == u'"')
            out += QLatin1String("&quot;");
        else if (c >= u' ' || c == u'\n' || c == u'\t')
            out += c;
    }
}

void startTag(QString &out, const dom::Element &element, const QString &color, bool root)
{
    out += u'<' + element.name().text();
    bool hasSpace = false, hasLink = false;
    for (const auto &attribute : element.attributeList()) {
        const QString name = attribute.name.text();
        // Names with a prefix that nobody declares would make the whole picture ill-formed.
        if (name.contains(u':') && !name.startsWith(QLatin1String("xlink:")) && !name.startsWith(QLatin1String("xml:")) && !name.startsWith(QLatin1String("xmlns:"))) continue;
        if (name.isEmpty() || !(name[0].isLetter() || name[0] == u'_')) continue;
        hasSpace = hasSpace || name == QLatin1String("xmlns");
        hasLink = hasLink || name == QLatin1String("xmlns:xlink");
        QString value = attribute.value;
        value.replace(QLatin1String("currentColor"), color, Qt::CaseInsensitive);
        out += u' ' + name + QLatin1String("=\"");
        escape(out, value, true);
        out += u'"';
    }
    if (root && !hasSpace) out += QLatin1String(" xmlns=\"http://www.w3.org/2000/svg\"");
    if (root && !hasLink) out += QLatin1String(" xmlns:xlink=\"http://www.w3.org/1999/xlink\"");
}

// Without scripts and foreign content; Qt's reader would pass them over anyhow.
QString markupOf(const dom::Element &svg, const QString &color)
{
    QString out;
    int nodes = 0, depth = 0;
    const dom::Node *node = &svg;
    while (node) {
        const dom::Element *element = node->asElement();
        bool enter = false;
        if (++nodes > mostNodes || out.size() > mostText) return {};
        if (element) {
            const bool skipped = element->name().text() == QLatin1String("script") || element->name().text() == QLatin1String("foreignObject");
            if (!skipped) {
                startTag(out, *element, color, element == &svg);
                enter = element->firstChild() != nullptr && depth < mostDepth;
                out += enter ? QLatin1String(">") : QLatin1String("/>");
            }
        } else if (node->isText()) {
            QString text = node->nodeValue();
            if (node->parentNode() && node->parentNode()->asElement() && node->parentNode()->asElement()->name().text() == QLatin1String("style"))
                text.replace(QLatin1String("currentColor"), color, Qt::CaseInsensitive);
            escape(out, text, false);
        }
        if (enter) {
            ++depth;
            node = node->asElement()->firstChild();
            continue;
        }
        while (node != &svg && !node->nextSibling()) {
            node = node->parentNode();
            out += QLatin1String("</") + node->asElement()->name().text() + u'>';
            --depth;
        }
        node = node == &svg ? nullptr : node->nextSibling();
    }
    return out;
}

} // namespace

void Painter::paintInlineSvg(const dom::Element &element, const css::ComputedStyle &style, const QRectF &content)
{
    // Reading a picture takes longer than painting it. Keyed by its text: nothing has to be told of a change.
    static QCache<QString, QSvgRenderer> *const known = new QCache<QString, QSvgRenderer>(8 << 20);
    const QString markup = markupOf(element, colorName(style.color()));
    if (markup.isEmpty()) return;
    QSvgRenderer *renderer = known->object(markup);
    if (!renderer) {
        renderer = new QSvgRenderer(markup.toUtf8());
        renderer->setAspectRatioMode(Qt::KeepAspectRatio);
        known->insert(markup, renderer, int(std::min<qsizetype>(markup.size() + 1000, 8 << 20)));
        renderer = known->object(markup);
        if (!renderer) return;
    }
    if (!renderer->isValid()) return;
    mPainter->save();
    mPainter->setClipRect(content, Qt::IntersectClip);
    mPainter->setRenderHint(QPainter::Antialiasing);
    QString view = element.attributeValue("viewBox");
    if (view.isEmpty()) view = element.attributeValue("viewbox");
    if (view.trimmed().isEmpty()) renderer->setViewBox(QRectF(QPointF(), content.size())); // units are pixels
    const bool stretched = element.attributeValue("preserveAspectRatio").trimmed().startsWith(QLatin1String("none"));
    renderer->setAspectRatioMode(stretched ? Qt::IgnoreAspectRatio : Qt::KeepAspectRatio);
    renderer->render(mPainter, content);
    mPainter->restore();
}

} // namespace paint
