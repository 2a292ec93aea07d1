// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/PrintCopy.h"

#include "engine/css/StyleObject.h"
#include "engine/dom/RawTree.h"
#include "engine/surface/View.h"

#include <QSet>

namespace surface {

using namespace dom;

namespace {

/// In the copy's own document: a clone would take ids of the shown one.
base::Ref<Node> copyOf(const Node &node, Document &document)
{
    switch (node.type()) {
    case NodeType::Element: {
        const auto &element = static_cast<const Element &>(node);
        auto copy = base::make<Element>(document, element.name(), element.space());
        for (const Attribute &attribute : element.attributeList()) RawTree::setAttribute(*copy, attribute.name, &attribute.value);
        if (element.isHeldOpen()) RawTree::setHeldOpen(*copy, true);
        return copy;
    }
    case NodeType::Text: return base::make<Text>(document, static_cast<const Text &>(node).data());
    case NodeType::DocumentType: {
        const auto &doctype = static_cast<const DocumentType &>(node);
        return base::make<DocumentType>(document, doctype.source(), doctype.spaceBehind());
    }
    default: return base::make<Comment>(document, static_cast<const Comment &>(node).data(), static_cast<const Comment &>(node).form());
    }
}

const css::StyleObject *runtimeStyleOf(const Node &node)
{
    const Element *element = node.asElement();
    const Element::RareData *rare = element ? element->rareDataIfAny() : nullptr;
    return rare && rare->runtimeStyle ? static_cast<const css::StyleObject *>(rare->runtimeStyle.get()) : nullptr;
}

} // namespace

PrintCopy::PrintCopy(Document &document, layout::ImageSource *images)
    : mDocument(Document::create()), mServices(*mDocument), mStyles(mServices.engine()), mImages(images)
{
    mDocument->setMode(document.mode());
    mDocument->setBaseURL(document.baseURL());
    copyTree(document);
    copySheets(document);
}

PrintCopy::~PrintCopy() = default;

// Walks both trees in step.
void PrintCopy::copyTree(Document &from)
{
    // Selected cells are shown by their runtime styles; paper knows no selection.
    QSet<const Node *> selected;
    if (auto *view = dynamic_cast<View *>(from.interaction))
        for (const auto &cell : view->cellSelection().cells()) selected.insert(cell.get());
    const Node *at = &from;
    Node *into = mDocument.get();
    for (const Node *node = from.next(&from); node; node = node->next(&from)) {
        while (node->parentNode() != at) {
            at = at->parentNode();
            into = into->parentNode();
        }
        const base::Ref<Node> copy = copyOf(*node, *mDocument);
        RawTree::append(static_cast<ParentNode &>(*into), *copy);
        if (const css::StyleObject *style = runtimeStyleOf(*node); style && !style->block()->isEmpty() && !selected.contains(node))
            mServices.runtimeStyle(static_cast<Element &>(*copy))->setCssText(style->cssText());
        if (node->firstChild()) {
            at = node;
            into = copy.get();
        }
    }
}

// Sheets that a host made, and what it wrote to linked ones, are in no text.
void PrintCopy::copySheets(Document &from)
{
    if (!from.styles) return;
    auto &services = static_cast<css::Services &>(*from.styles);
    for (uint32_t i = 0; i < services.styleSheetCount(from); ++i) {
        const css::StyleSheetObject &sheet = *services.styleSheet(from, i);
        css::StyleSheetObject *copy = sheet.kind() == css::StyleSheetObject::Kind::Created ? mServices.createStyleSheet(*mDocument, QString())
                                                                                          : mServices.styleSheet(*mDocument, i);
        if (!copy || copy->kind() != sheet.kind()) continue;
        const bool inText = sheet.kind() == css::StyleSheetObject::Kind::Style;
        if (!inText && copy->cssText() != sheet.cssText()) copy->setCssText(sheet.cssText());
        copy->setDisabled(sheet.disabled());
    }
}

layout::LayoutTree &PrintCopy::layOut(QSizeF area)
{
    mServices.engine().setMedium({QStringLiteral("print"), area});
    mTree = std::make_unique<layout::LayoutTree>(*mDocument, mStyles);
    mTree->setImageSource(mImages);
    mTree->setViewport(QSize(std::max(1, int(area.width())), std::max(1, int(area.height()))));
    mTree->update();
    return *mTree;
}

} // namespace surface
