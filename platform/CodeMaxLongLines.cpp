// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/CodeMaxLongLines.h"

#include "platform/CodeMax.h"

#include <QLocale>
#include <QPalette>
#include <algorithm>

namespace {

// Above those that the lexer takes.
constexpr unsigned long hiddenStyle = 200;
constexpr unsigned long noteStyle = 201;

} // namespace

long LongLines::send(unsigned int message, unsigned long wParam, long lParam) const
{
    return mEditor.SendScintilla(message, wParam, lParam);
}

void LongLines::setUp()
{
    const QColor paper = mEditor.palette().color(QPalette::Window),
                 text = mEditor.palette().color(QPalette::WindowText);
    mEditor.SendScintilla(CodeMax::SCI_STYLESETFORE, noteStyle, text);
    mEditor.SendScintilla(CodeMax::SCI_STYLESETBACK, noteStyle, paper);
    send(CodeMax::SCI_STYLESETITALIC, noteStyle, 1);
    send(CodeMax::SCI_STYLESETVISIBLE, hiddenStyle, 0);
    send(CodeMax::SCI_ANNOTATIONSETVISIBLE, CodeMax::ANNOTATION_STANDARD);
}

bool LongLines::isLong(long line) const
{
    return send(CodeMax::SCI_LINELENGTH, static_cast<unsigned long>(line)) > longLine;
}

bool LongLines::isIn(long start, long end) const
{
    const long last = send(CodeMax::SCI_LINEFROMPOSITION, static_cast<unsigned long>(end));
    for (long line = send(CodeMax::SCI_LINEFROMPOSITION, static_cast<unsigned long>(start)); line <= last; ++line)
        if (isLong(line)) return true;
    return false;
}

LongLines::Stretch LongLines::lineOf(long line) const
{
    const auto number = static_cast<unsigned long>(line);
    return {send(CodeMax::SCI_POSITIONFROMLINE, number), send(CodeMax::SCI_GETLINEENDPOSITION, number)};
}

/// A window is three steps: the caret's and its neighbours. It stays until the caret comes near an end of it, so that
/// the text stands still while one writes.
bool LongLines::settle()
{
    const long caret = send(CodeMax::SCI_GETCURRENTPOS);
    const long line = send(CodeMax::SCI_LINEFROMPOSITION, static_cast<unsigned long>(caret));
    const auto [start, end] = lineOf(line);
    const auto suits = [&, start = start, end = end](long place) {
        const long from = start + (place - 1) * step, to = from + 3 * step;
        return (from <= start || caret >= from + step / 2) && (to >= end || caret <= to - step / 2);
    };
    const long old = line == mLine ? mPlace : 0;
    const long place = !isLong(line) ? 0 : suits(old) ? old : (caret - start) / step;
    const bool moved = place != old;
    mLine = line;
    mPlace = place;
    return moved;
}

LongLines::Stretch LongLines::windowOf(long line) const
{
    const auto [start, end] = lineOf(line);
    const auto boundary = [this, start = start, end = end](long at) {
        if (at <= start || at >= end) return std::clamp(at, start, end);
        // A place within a character isn't one; the place in front of the next one is.
        return send(CodeMax::SCI_POSITIONBEFORE, static_cast<unsigned long>(at + 1));
    };
    const long from = start + ((line == mLine ? mPlace : 0) - 1) * step;
    return {boundary(from), boundary(from + 3 * step)};
}

void LongLines::setStyle(const Stretch &stretch, unsigned long style)
{
    if (stretch.start >= stretch.end) return;
    send(CodeMax::SCI_STARTSTYLING, static_cast<unsigned long>(stretch.start));
    send(CodeMax::SCI_SETSTYLING, static_cast<unsigned long>(stretch.end - stretch.start), static_cast<long>(style));
}

void LongLines::hide(long line)
{
    const Stretch whole = lineOf(line), window = windowOf(line);
    setStyle({whole.start, window.start}, hiddenStyle);
    setStyle({window.end, whole.end}, hiddenStyle);
    const auto index = [this](long of) {
        return send(CodeMax::SCI_INDEXPOSITIONFROMLINE, static_cast<unsigned long>(of),
                    CodeMax::SC_LINECHARACTERINDEX_UTF16);
    };
    const long from = send(CodeMax::SCI_COUNTCODEUNITS, static_cast<unsigned long>(whole.start), window.start);
    const long shown = send(CodeMax::SCI_COUNTCODEUNITS, static_cast<unsigned long>(window.start), window.end);
    note(line, CodeMax::tr("Shown: characters %L1 to %L2 of about %L3. The others show around the caret.")
                   .arg(from + 1)
                   .arg(from + shown)
                   .arg((index(line + 1) - index(line) + 500) / 1000 * 1000)); // the same while somebody types
}

/// Only a note that differs is written: it moves the lines below.
void LongLines::note(long line, const QString &text)
{
    const auto number = static_cast<unsigned long>(line);
    const QByteArray bytes = text.toUtf8();
    QByteArray old(send(CodeMax::SCI_ANNOTATIONGETTEXT, number), '\0');
    if (!old.isEmpty()) mEditor.SendScintilla(CodeMax::SCI_ANNOTATIONGETTEXT, number, old.data());
    if (old == bytes) return;
    mEditor.SendScintilla(CodeMax::SCI_ANNOTATIONSETTEXT, number, bytes.isEmpty() ? nullptr : bytes.constData());
    send(CodeMax::SCI_ANNOTATIONSETSTYLE, number, static_cast<long>(noteStyle));
}

void LongLines::hideWithin(long start, long end)
{
    settle();
    const long styled = send(CodeMax::SCI_GETENDSTYLED);
    const long last = send(CodeMax::SCI_LINEFROMPOSITION, static_cast<unsigned long>(end));
    for (long line = send(CodeMax::SCI_LINEFROMPOSITION, static_cast<unsigned long>(start)); line <= last; ++line) {
        if (isLong(line))
            hide(line);
        else
            note(line, {});
    }
    send(CodeMax::SCI_STARTSTYLING, static_cast<unsigned long>(styled)); // how far the colouring has come
}

void LongLines::arrived(long start, long end)
{
    if (end - start > longLine) hideWithin(start, end);
}

void LongLines::follow()
{
    if (!settle()) return;
    const auto caretX = [this] { return send(CodeMax::SCI_POINTXFROMPOSITION, 0, send(CodeMax::SCI_GETCURRENTPOS)); };
    const auto isInView = [this](long x) { return x >= 0 && x <= mEditor.viewport()->width(); };
    const bool wasInView = isInView(caretX());
    const long styled = send(CodeMax::SCI_GETENDSTYLED);
    setStyle(windowOf(mLine), 0);
    hide(mLine);
    // The window's colours come with the next painting.
    send(CodeMax::SCI_STARTSTYLING, static_cast<unsigned long>(std::min(styled, lineOf(mLine).start)));
    // What the caret stands in has moved; where somebody looks at it, it comes along.
    if (wasInView && !isInView(caretX())) send(CodeMax::SCI_SCROLLCARET);
}

void LongLines::colour(long end)
{
    const long styled = send(CodeMax::SCI_GETENDSTYLED);
    if (styled >= end) return;
    send(CodeMax::SCI_COLOURISE, static_cast<unsigned long>(styled), end);
    hideWithin(styled, end);
}
