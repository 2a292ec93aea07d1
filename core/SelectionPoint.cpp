// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/SelectionPoint.h"

#include "core/modMainDump.h"
#include "engine/ranges/TextIndex.h"

namespace modMain {

using support::given;
using support::trap;

namespace {

SelectionRange rangeOf(IHTMLDocument2 *DOM)
{
    ranges::SelectionObject *const selection = DOM ? ranges::selectionOf(*DOM) : nullptr;
    if (!selection || !DOM->body()) return {};
    if (selection->type() == ranges::SelectionObject::Type::Control)
        return {{}, base::Ref<IHTMLControlRange>(new IHTMLControlRange(*selection, selection->elements()))};
    return {ranges::textRangeOf(*selection), {}};
}

/// Whether somebody who moves through the page character by character, at most as often as its text is long and once
/// more, comes as far as `count`. Only a page with more objects than text is longer than that: objects have no text.
bool isReached(IHTMLDocument2 &DOM, ranges::TextIndex &index, uint32_t count)
{
    static const dom::Atom objects[] = {"img",    "input", "button", "select", "textarea", "object", "embed",
                                        "iframe", "video", "audio",  "canvas", "svg",      "applet", "hr"};
    uint32_t withoutText = 1; // the end of the last block, which is no part of the text
    for (const dom::Atom name : objects)
        withoutText += uint32_t(DOM.elementsNamed(name).size());
    if (count <= 1 || count + withoutText <= index.total() + 1) return true;
    return qsizetype(count) - 1 <= ranges::createTextRange(DOM)->text().size();
}

} // namespace

SelectionRange CreateRange(IHTMLDocument2 *DOM)
{
    return trap<SelectionRange>("modMain", "CreateRange", given(module, "DOM", DOM),
                                [&](SelectionRange &Result) { Result = rangeOf(DOM); });
}

SelectionRange RangeForElement(IHTMLElement *e)
{
    return trap<SelectionRange>("modMain", "RangeForElement", given(module, "e", e), [&](SelectionRange &Result) {
        if (!e) return;
        if (e->tagName() == QLatin1String("TABLE")) {
            auto range = ranges::createControlRange(e->document());
            range->add(e);
            Result.control = std::move(range);
        } else {
            auto range = ranges::createTextRange(e->document());
            range->moveToElementText(e);
            Result.text = std::move(range);
        }
    });
}

void Select(const SelectionRange &Range)
{
    if (Range.text) Range.text->select();
    if (Range.control) Range.control->select();
}

void SaveSelectionPoint(IHTMLDocument2 *DOM, int &SelectionLength, QString &CharactersFromStart)
{
    const auto parameters =
        given(module, "DOM", DOM, "SelectionLength", SelectionLength, "CharactersFromStart", CharactersFromStart);
    SelectionRange range;
    uint32_t count = 0;
    trap("modMain", "SaveSelectionPoint", parameters.locals("Range", range.text, "Count", count), [&] {
        range = rangeOf(DOM);
        if (!range.text) return;
        SelectionLength = int(range.text->text().size());
        ranges::TextIndex &index = range.text->index();
        // In a page without a character the first step stands where it began, and is counted all the same.
        count = index.total() == 0 ? 1 : range.text->startCount();
        if (isReached(*DOM, index, count)) CharactersFromStart = QString::number(count);
    });
}

void RestoreSelectionPoint(IHTMLDocument2 *DOM, int &SelectionLength, QString &CharactersFromStart)
{
    const auto parameters =
        given(module, "DOM", DOM, "SelectionLength", SelectionLength, "CharactersFromStart", CharactersFromStart);
    SelectionRange range;
    trap("modMain", "RestoreSelectionPoint", parameters.locals("Range", range.text), [&] {
        range = rangeOf(DOM);
        // In a page without a character every place is the same: the selection stays.
        if (range.text && range.text->index().total() > 0) {
            const uint32_t start = uint32_t(std::max(0, CharactersFromStart.toInt()));
            const std::pair stood(range.text->startCount(), range.text->endCount());
            range.text->setCounts(start, start + uint32_t(std::max(0, SelectionLength)));
            // Where it is there already it keeps its place among those that count the same, and its direction.
            const bool isThere = range.text->page().type() == ranges::SelectionObject::Type::Text &&
                                 stood == std::pair(range.text->startCount(), range.text->endCount());
            if (!isThere) range.text->select();
        }
        SelectionLength = 0;
        CharactersFromStart.clear();
    });
}

} // namespace modMain
