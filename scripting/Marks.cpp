// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/CharacterData.h"
#include "engine/dom/RawTree.h"
#include "engine/html/Parser.h"
#include "scripting/Inside.h"
#include "scripting/Script.h"

// Marks in a text are found by parsing it with characters that no page has in their place.

namespace scripting {

namespace {

using namespace dom;

constexpr char16_t anchorMark = 0xE001;
constexpr char16_t focusMark = 0xE000;

QString withCharacters(QString text, bool keep)
{
    const auto put = [keep](char16_t mark) { return keep ? QString(QChar(mark)) : QString(); };
    const QString anchorComment = keep ? QStringLiteral("<!--%1-->").arg(QChar(anchorMark)) : QString();
    const QString focusComment = keep ? QStringLiteral("<!--%1-->").arg(QChar(focusMark)) : QString();
    text.replace(QStringLiteral("<!--^-->"), anchorComment).replace(QStringLiteral("<!--|-->"), focusComment);
    text.replace(u'^', put(anchorMark)).replace(u'|', put(focusMark));
    return text;
}

MarkedText::Place placeOf(const Element &body, Node &node, uint32_t offset)
{
    MarkedText::Place place;
    place.offset = offset;
    for (Node *at = &node; at != &body; at = at->parentNode()) place.path.prepend(at->index());
    return place;
}

std::optional<MarkedText::Place> take(Element &body, char16_t mark)
{
    for (Node *node = body.next(&body); node; node = node->next(&body)) {
        if (!node->isText() && !node->isComment()) continue;
        auto &data = static_cast<CharacterData &>(*node);
        const qsizetype at = data.data().indexOf(QChar(mark));
        if (at < 0) continue;
        const qsizetype before = data.data().left(at).count(QChar(anchorMark)) + data.data().left(at).count(QChar(focusMark));
        if (node->isText() && data.length() > 1) {
            RawTree::replaceText(data, uint32_t(at), 1, u"");
            Q_UNUSED(before);
            return placeOf(body, *node, uint32_t(at));
        }
        ParentNode &parent = *node->parentNode();
        const uint32_t index = node->index();
        Node *previous = node->previousSibling(), *next = node->nextSibling();
        RawTree::remove(*node);
        if (previous && previous->isText() && next && next->isText()) { // the mark alone parted them
            auto &text = static_cast<CharacterData &>(*previous);
            const uint32_t end = text.length();
            RawTree::replaceText(text, end, 0, static_cast<CharacterData &>(*next).data());
            RawTree::remove(*next);
            return placeOf(body, text, end);
        }
        return placeOf(body, parent, index);
    }
    return std::nullopt;
}

} // namespace

MarkedText takeMarks(const QString &marked)
{
    if (marked.contains(QLatin1String("data-selected"))) throw ScriptError(QStringLiteral("not available yet"));
    MarkedText result;
    result.text = withCharacters(marked, false);
    const auto document = html::parseDocument(QStringLiteral("<HTML><HEAD></HEAD><BODY>") + withCharacters(marked, true) +
                                              QStringLiteral("</BODY></HTML>"));
    Element &body = *document->body();
    // The second mark's place counts with the first one gone, so the one taken last is exact; the first is asked again.
    result.anchor = take(body, anchorMark);
    result.focus = take(body, focusMark);
    if (result.anchor && result.focus && result.focus->path == result.anchor->path &&
        result.focus->offset < result.anchor->offset) {
        // Both in one text, the focus in front: it was still there when the anchor was counted.
        --result.anchor->offset;
    }
    return result;
}

} // namespace scripting
