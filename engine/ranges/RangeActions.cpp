// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/RangeActions.h"

#include "base/Error.h"
#include "base/Fault.h"
#include "engine/ranges/RangeHost.h"

namespace ranges {

namespace {

[[noreturn]] void notShown()
{
    throw base::Error(base::errors::notPossible, QStringLiteral("The document isn't shown."));
}

RangeHost &hostOf(const SelectionObject &page)
{
    if (!page.host) notShown();
    return *page.host;
}

SelectionObject &pageOf(dom::Document &document)
{
    SelectionObject *const page = selectionOf(document);
    if (!page) notShown();
    return *page;
}

} // namespace

SelectionObject *selectionOf(dom::Document &document)
{
    return document.interaction ? document.interaction->selection() : nullptr;
}

Ref<TextRange> textRangeOf(SelectionObject &page)
{
    Span span = page.span();
    if (!span.start) {
        const Position start = page.index().placeAt(0, TextIndex::Side::Following);
        span = {start, start};
    }
    return Ref<TextRange>(new TextRange(page, span));
}

Ref<TextRange> createTextRange(dom::Document &document)
{
    if (!document.body()) notShown();
    return TextRange::over(pageOf(document), *document.body());
}

Ref<ControlRange> createControlRange(dom::Document &document)
{
    return Ref<ControlRange>(new ControlRange(pageOf(document)));
}

void pasteHTML(TextRange &range, const QString &html)
{
    base::faults::check("IHTMLTxtRange", "pasteHTML");
    hostOf(range.page()).paste(range, html);
}

void setText(TextRange &range, const QString &text)
{
    base::faults::check("IHTMLTxtRange", "text");
    hostOf(range.page()).write(range, text);
}

void moveToPoint(TextRange &range, QPoint client)
{
    base::faults::check("IHTMLTxtRange", "moveToPoint");
    const Position place = hostOf(range.page()).placeAt(client);
    if (!place) throw base::Error(base::errors::invalidCall, QStringLiteral("No text is at that point."));
    range.moveToPlace(place);
}

} // namespace ranges
