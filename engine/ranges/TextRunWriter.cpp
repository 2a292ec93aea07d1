// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/TextRunWriter.h"

#include "engine/dom/Names.h"
#include "engine/ranges/Content.h"

#include <QSet>

namespace ranges {

using namespace dom;

namespace {

constexpr uint32_t pieceUnits = 1024; // longer texts are cut, so that no place in one costs more than this

/// Which units of a text show.
struct Collapse
{
    bool preserved;
    bool afterBlank;
    bool shows(char16_t c)
    {
        if (preserved) return c != u'\r';
        const bool blank = isBlank(c);
        const bool shown = !(blank && afterBlank);
        afterBlank = blank;
        return shown;
    }
};

} // namespace

void TextRunWriter::addText(Text &text)
{
    const bool preserved = mRendering.preservesSpace(text);
    const QString &data = text.data();
    const auto *units = reinterpret_cast<const char16_t *>(data.utf16());
    Collapse collapse{preserved, preserved ? false : mAfterBlank};
    const uint32_t before = mRun.length;
    for (uint32_t from = 0; from < uint32_t(data.size()); from += pieceUnits) {
        mRun.pieces.push_back({&text, from, mRun.length, collapse.afterBlank, preserved});
        const uint32_t end = std::min(uint32_t(data.size()), from + pieceUnits);
        const uint32_t start = mRun.length;
        uint32_t plain = 0;
        for (uint32_t i = from; i < end; ++i) {
            if (units[i] < u' ') mRun.pieces.back().hasControls = true;
            if (!collapse.shows(units[i])) continue;
            if (i - from == mRun.length++ - start) ++plain;
        }
        mRun.pieces.back().plain = plain;
    }
    if (preserved) {
        mAfterBlank = mEndsBlank = false;
        if (mRun.length > before) mLastBreak = false;
        return;
    }
    mAfterBlank = collapse.afterBlank;
    if (mRun.length > before) {
        mEndsBlank = collapse.afterBlank;
        // A blank alone doesn't make a line behind a break.
        if (mRun.length > before + (mEndsBlank ? 1 : 0)) mLastBreak = false;
    }
}

void TextRunWriter::dropBlank()
{
    if (!mEndsBlank || mRun.length == 0) return;
    mEndsBlank = false;
    --mRun.length;
    for (size_t i = mRun.pieces.size(); i-- > 0 && mRun.pieces[i].chars > mRun.length;)
        mRun.pieces[i].chars = mRun.length;
}

void TextRunWriter::addBreak(Element &element)
{
    dropBlank();
    mRun.pieces.push_back({&element, 0, mRun.length, false, false});
    ++mRun.length;
    mAfterBlank = true;
    mLastBreak = true;
}

void TextRunWriter::addObject(Element &element)
{
    mRun.pieces.push_back({&element, 0, mRun.length, false, false});
    ++mRun.length;
    mAfterBlank = mEndsBlank = mLastBreak = false;
}

void TextRunWriter::setRule(Element &element)
{
    mRun.pieces.assign(1, {&element, 0, 0, false, false});
    mRun.length = 0;
    mRun.rule = true;
}

void TextRunWriter::holdOpen(Element &block)
{
    if (!isEmpty()) return;
    mRun.pieces.assign(1, {&block, 0, 0, false, false});
    mRun.held = true;
}

void TextRunWriter::finish()
{
    if (mRun.held || mRun.rule) return;
    dropBlank();
    if (mLastBreak) { // it ends the last line and adds none
        --mRun.length;
        for (size_t i = mRun.pieces.size(); i-- > 0 && mRun.pieces[i].chars > mRun.length;)
            mRun.pieces[i].chars = mRun.length;
        return;
    }
    if (mRun.length == 0) mRun.pieces.clear();
}

uint32_t countVisible(const TextRun::Piece &piece, const Text &text, uint32_t offset)
{
    if (piece.preserved && !text.data().contains(u'\r')) return offset - piece.from;
    Collapse collapse{piece.preserved, piece.afterBlank};
    const QString &data = text.data();
    uint32_t count = 0;
    for (uint32_t i = piece.from; i < offset; ++i)
        if (collapse.shows(data[i].unicode())) ++count;
    return count;
}

Position placeInText(const TextRun::Piece &piece, Text &text, uint32_t n, TextIndex::Side side)
{
    Collapse collapse{piece.preserved, piece.afterBlank};
    const QString &data = text.data();
    for (uint32_t i = piece.from; i < uint32_t(data.size()); ++i)
        if (collapse.shows(data[i].unicode()) && n-- == 0)
            return {&text, side == TextIndex::Side::Following ? i : i + 1};
    return Position::endOf(text);
}

void readPlain(const TextRun::Piece &piece, const Text &text, uint32_t skip, uint32_t count, QString &out)
{
    const qsizetype from = out.size();
    out.append(QStringView(text.data()).mid(piece.from + skip, count));
    if (piece.preserved || !piece.hasControls) return;
    for (QChar *at = out.data() + from, *end = out.data() + out.size(); at != end; ++at)
        if (at->unicode() < u' ' && isBlank(at->unicode())) *at = u' ';
}

void readText(const TextRun::Piece &piece, const Text &text, uint32_t skip, uint32_t count, QString &out)
{
    Collapse collapse{piece.preserved, piece.afterBlank};
    const QString &data = text.data();
    for (uint32_t i = piece.from; count > 0 && i < uint32_t(data.size()); ++i) {
        const char16_t c = data[i].unicode();
        if (!collapse.shows(c)) continue;
        if (skip > 0) {
            --skip;
            continue;
        }
        out.append(!piece.preserved && isBlank(c) ? u' ' : c);
        --count;
    }
}

bool isReplacedName(const Element &element)
{
    static const QSet<Atom> objects = {names::img,    names::hr,    names::input,  names::select, names::textarea,
                                       names::button, names::iframe, names::object, names::applet, names::embed,
                                       names::video,  names::audio, names::canvas, names::keygen, names::progress};
    return objects.contains(element.name());
}

} // namespace ranges
