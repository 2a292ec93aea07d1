// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>

#include <cstdint>
#include <vector>

namespace html {

/// What the tree builder does with an element's tags, as far as it bears on which elements are open.
enum TagTrait : uint32_t {
    IsVoid = 1,
    IsRawText = 2,
    IsFormatting = 4,
    ClosesParagraph = 8, ///< its start tag ends an open P
    EndsScope = 16,      ///< an end tag inside doesn't reach what stands around it
    IsSpecial = 32,      ///< an end tag that has no rule of its own stops here
    IsHeading = 64,
    IsSection = 128, ///< of a table
    IsCell = 256,
    HoldsFormatting = 512, ///< formatting elements open outside aren't made anew in it, nor its own behind it
    PassesItems = 1024,    ///< what a new list item looks through for the one to close
    IsTablePart = 2048,    ///< its end tag reaches as far as the table
    EndsItself = 4096,     ///< its end tag closes what it finds in scope
    BreaksOut = 8192,      ///< its start tag ends foreign content
    TakesHtml = 16384,     ///< a foreign element that holds HTML
    IsRuby = 32768,
    EndsItems = 65536, ///< a list item's end tag doesn't reach out of it
};

/// The elements that are open while a text is read, near enough to the tree builder's to know how deep it stands. What
/// the tree builder implies (a TBODY, a TR) counts as if it were written, so that a text and what is saved of it count
/// alike.
class OpenElements
{
public:
    OpenElements();

    /// A number for a name in small letters; the same name has the same one.
    int idOf(const QByteArray &name);
    bool is(int id, uint32_t traits) const { return mTraits[size_t(id)] & traits; }

    /// Elements open, with the formatting ones that come back in the next text, and with what a start tag of `id`
    /// implies.
    int depthFor(int id) const { return depth() + int(impliedFor(id).size()); }
    int depth() const { return int(mOpen.size()) + mWaiting; }
    int formatting() const;
    bool inForeign() const { return !mOpen.empty() && mOpen.back().foreign && !is(mOpen.back().id, TakesHtml); }
    bool hasParagraph() const { return scoped(mP, EndsScope, mButton) >= 0; }
    /// Closes what a start tag of `id` closes.
    void closeFor(int id);
    void open(int id);
    /// `whole`: the tag as written; of three alike the first counts no more.
    void openFormatting(int id, const QByteArray &whole);
    void close(int id);

private:
    struct Formatting
    {
        int id; ///< -1: a boundary that formatting doesn't cross
        QByteArray whole;
        bool waits; ///< a block that ended took it along
    };
    struct Entry
    {
        int id;
        bool foreign = false;
        bool formats = false; ///< stands in the list of formatting elements
    };
    std::vector<int> impliedFor(int id) const;
    int top() const { return mOpen.empty() ? -1 : mOpen.back().id; }
    /// The index of the innermost open `id` that no boundary hides; -1 for none.
    int scoped(int id, uint32_t boundary, int other = -1) const;
    void push(int id);
    void popFrom(size_t index);
    void popBelow(std::initializer_list<int> ids);
    void closeItem(std::initializer_list<int> items);
    void closePlain(int id);
    bool closeFormatting(int id);
    void eraseFormatting(size_t index);
    void dropMarker();

    QHash<QByteArray, int> mIds;
    std::vector<uint32_t> mTraits;
    std::vector<int> mCount; // open elements by id
    std::vector<Entry> mOpen;
    std::vector<Formatting> mFormatting;
    int mWaiting = 0;
    int mP, mLi, mDt, mDd, mOption, mOptgroup, mTable, mTbody, mThead, mTfoot, mTr, mColgroup, mCol, mSvg, mMath,
        mButton, mA, mNobr, mForm, mClosed;
};

} // namespace html
