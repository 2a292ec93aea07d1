// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/SelectionObject.h"
#include "engine/ranges/TextIndex.h"

#include <QRect>
#include <optional>

namespace ranges {

class TextMatcher;
struct TextHit;

/// Two places of a document between which a script works. Edits carry them along. Counts are those of `TextIndex`.
///
/// What can't be done raises `base::Error` with a number and a text; every member does once the document is gone.
class TextRange final : public base::RefCounted
{
public:
    /// The start must not be behind the end.
    TextRange(SelectionObject &page, const Span &span);
    /// Over the whole of an element, as `moveToElementText` leaves it.
    static Ref<TextRange> over(SelectionObject &page, dom::Element &element);
    Ref<TextRange> duplicate() const;

    SelectionObject &page() const;
    Span span() const { return mRange.span(); }
    void setSpan(const Span &span);
    uint32_t startCount() const { return index().countBefore(span().start); }
    uint32_t endCount() const { return index().countBefore(span().end); }
    bool isEmpty() const { return startCount() == endCount(); }

    /// Breaks as CR LF, and so each boundary but one that ends it; objects as nothing.
    QString text() const;
    QString htmlText() const;
    /// The innermost element that holds it; the block whose end it takes in where it takes in nothing behind that.
    dom::Element *parentElement() const;

    void collapse(bool toStart = true);
    /// "character", "word", "sentence", "textedit", any case; units are told by their starts. How far it went.
    int move(const QString &unit, int count);
    int moveStart(const QString &unit, int count);
    int moveEnd(const QString &unit, int count);
    /// To whole units around it; without the blanks behind a word. Whether it changed.
    bool expand(const QString &unit);
    /// With the element's end. Fails for null and for what isn't in BODY.
    void moveToElementText(dom::Element *element);

    /// To where a point is. In an empty block it stands behind the line: one character back is the block's start.
    void moveToPlace(const Position &place);

    /// "StartToStart", "StartToEnd", "EndToStart", "EndToEnd", any case: this one's end (the first word) against the
    /// other's; below, at or above 0. Fails between documents.
    int compareEndPoints(const QString &how, const TextRange &other) const;
    void setEndPoint(const QString &how, const TextRange &other);
    /// Whether the other lies in this one.
    bool inRange(const TextRange &other) const;
    bool isEqual(const TextRange &other) const;

    enum FindFlag { Backward = 1, WholeWord = 2, MatchCase = 4 };
    static constexpr int noLimit = 1073741823;
    /// From its start through the document; backwards from its end. Blanks in the sought text stand for however many a
    /// reader sees, no-break ones too. A `count` above 0 limits how far from there the hit may end, 0 keeps it in the
    /// range. Without a hit the range stays.
    bool findText(const QString &text, int count = noLimit, int flags = 0);

    void select() const;
    /// Names the places for `moveToBookmark` of this document until it is loaded anew. Fails where what the range held
    /// has gone.
    QString bookmark() const;
    /// Fails for what isn't a bookmark of this document.
    void moveToBookmark(const QString &bookmark);

    /// Sets it by counts, clamped.
    void setCounts(uint32_t start, uint32_t end);
    TextIndex &index() const { return page().index(); }

private:
    enum class Unit : uint8_t { Character, Word, Sentence, TextEdit };
    enum class End : uint8_t { Start, End };
    bool hasLost() const;
    /// `left` is how far the hit may reach.
    bool findForward(const TextMatcher &matcher, int64_t left);
    bool findBackward(const TextMatcher &matcher, int64_t left);
    bool findAcrossRuns(const TextMatcher &matcher, int64_t left, bool backward);
    bool take(const TextRun &run, const TextHit &hit);
    static Unit unitOf(const QString &name);
    struct Ends
    {
        End mine, theirs;
    };
    static Ends endsOf(const QString &how);
    uint32_t countOf(End end) const { return end == End::Start ? startCount() : endCount(); }
    int travel(uint32_t &at, Unit unit, int count) const;
    Position caretAt(uint32_t count) const;
    void sameDocument(const TextRange &other) const;

    std::shared_ptr<SelectionObject *> mPage;
    LiveRange mRange;
    bool mBehindLine = false; ///< a caret behind the line of an empty block
    bool mHeld = false;      ///< it took something in when it was set,
    LivePosition mHeldStart; ///< of which this is what is left, without what came in later at its ends
    LivePosition mHeldEnd;
};

/// The fragment of HTML that a range holds; see the design notes of ranges.
QString htmlOf(const TextRange &range);
/// The element whose whole a span is: it ends right behind the element, or BODY's content ends it. Null for none.
dom::Element *closedElement(const TextIndex &index, const Span &span);

} // namespace ranges
