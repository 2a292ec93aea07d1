// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/html/OpenElements.h"

namespace html {

namespace {

struct Group
{
    uint32_t trait;
    const char *names;
};
// From the tree construction rules of the HTML standard.
constexpr Group groups[] = {
    {IsVoid, "area base basefont bgsound br col embed frame hr img input keygen link meta param source track wbr"},
    {IsRawText, "script style xmp iframe noembed noframes textarea title"},
    {IsFormatting, "a b big code em font i nobr s small strike strong tt u"},
    // A table does so too, but not in quirks mode, and which mode it is isn't known yet.
    {ClosesParagraph,
     "address article aside blockquote center details dialog dir div dl fieldset figcaption figure footer "
     "form h1 h2 h3 h4 h5 h6 header hgroup hr main menu nav ol p pre listing section summary ul plaintext "
     "xmp li dd dt"},
    {EndsScope, "applet caption html table td th marquee object template"},
    {IsSpecial,
     "address applet area article aside base basefont bgsound blockquote body br button caption center col "
     "colgroup dd details dir div dl dt embed fieldset figcaption figure footer form frame frameset h1 h2 h3 h4 "
     "h5 h6 head header hgroup hr html iframe img input isindex li link listing main marquee menu menuitem meta "
     "nav noembed noframes noscript object ol p param plaintext pre script section select source style summary "
     "table tbody td template textarea tfoot th thead title tr track ul wbr xmp"},
    {IsHeading, "h1 h2 h3 h4 h5 h6"},
    {IsSection, "tbody thead tfoot"},
    {IsCell, "td th"},
    {HoldsFormatting, "td th caption applet marquee object template"},
    {PassesItems, "address div p"},
    {IsTablePart, "table tbody thead tfoot tr td th caption colgroup"},
    {EndsItself,
     "address applet article aside blockquote button center details dialog dir div dl fieldset figcaption figure "
     "footer form h1 h2 h3 h4 h5 h6 header hgroup listing main marquee menu nav object ol p pre section select summary "
     "ul li dd dt"},
    {EndsItems, "ol ul"},
    {BreaksOut,
     "b big blockquote body br center code dd div dl dt em embed h1 h2 h3 h4 h5 h6 head hr i img li listing menu "
     "meta nobr ol p pre ruby s small span strong strike sub sup table tt u ul var"},
    {TakesHtml, "foreignobject desc title mi mo mn ms mtext annotation-xml"},
    {IsRuby, "rb rp rt rtc"},
};

} // namespace

OpenElements::OpenElements()
{
    for (const Group &group : groups)
        for (const QByteArray &name : QByteArray(group.names).split(' ')) {
            const int id = idOf(name); // may make room, so that it comes first
            mTraits[size_t(id)] |= group.trait;
        }
    const std::pair<int *, const char *> own[] = {{&mP, "p"},         {&mLi, "li"},         {&mDt, "dt"},
                                                  {&mDd, "dd"},       {&mOption, "option"}, {&mOptgroup, "optgroup"},
                                                  {&mTable, "table"}, {&mTbody, "tbody"},   {&mThead, "thead"},
                                                  {&mTfoot, "tfoot"}, {&mTr, "tr"},         {&mColgroup, "colgroup"},
                                                  {&mCol, "col"},     {&mSvg, "svg"},       {&mMath, "math"},
                                                  {&mA, "a"},         {&mNobr, "nobr"},     {&mButton, "button"},
                                                  {&mForm, "form"},   {&mClosed, ""}};
    for (const auto &[id, name] : own)
        *id = idOf(name);
}

int OpenElements::idOf(const QByteArray &name)
{
    auto found = mIds.constFind(name);
    if (found != mIds.cend()) return *found;
    const int id = int(mTraits.size());
    mIds.insert(name, id);
    mTraits.push_back(0);
    mCount.push_back(0);
    return id;
}

int OpenElements::formatting() const
{
    int count = 0;
    for (size_t i = mFormatting.size(); i-- > 0 && mFormatting[i].id >= 0;)
        ++count;
    return count;
}

int OpenElements::scoped(int id, uint32_t boundary, int other) const
{
    if (!mCount[size_t(id)]) return -1;
    for (size_t i = mOpen.size(); i-- > 0;) {
        if (mOpen[i].id == id) return int(i);
        if (is(mOpen[i].id, boundary) || mOpen[i].id == other) return -1;
    }
    return -1;
}

void OpenElements::push(int id)
{
    const bool foreign = id == mSvg || id == mMath || inForeign();
    mOpen.push_back({id, foreign});
    ++mCount[size_t(id)];
    if (!foreign && is(id, HoldsFormatting)) mFormatting.push_back({-1, {}, false});
}

void OpenElements::dropMarker()
{
    while (!mFormatting.empty()) {
        const bool marker = mFormatting.back().id < 0;
        if (mFormatting.back().waits) --mWaiting;
        mFormatting.pop_back();
        if (marker) return;
    }
}

// Formatting elements that go with a block come back in the next text.
void OpenElements::popFrom(size_t index)
{
    while (mOpen.size() > index) {
        const Entry entry = mOpen.back();
        mOpen.pop_back();
        --mCount[size_t(entry.id)];
        if (!entry.foreign && is(entry.id, HoldsFormatting)) dropMarker();
        if (!entry.formats) continue;
        for (size_t i = mFormatting.size(); i-- > 0;)
            if (mFormatting[i].id == entry.id && !mFormatting[i].waits) {
                mFormatting[i].waits = true;
                ++mWaiting;
                break;
            }
    }
}

void OpenElements::popBelow(std::initializer_list<int> ids)
{
    for (size_t i = mOpen.size(); i-- > 0;) {
        for (const int id : ids)
            if (mOpen[i].id == id) return popFrom(i + 1);
        if (mOpen[i].id == mTable) return;
    }
}

void OpenElements::closeItem(std::initializer_list<int> items)
{
    for (size_t i = mOpen.size(); i-- > 0;) {
        for (const int id : items)
            if (mOpen[i].id == id) return popFrom(i);
        if (is(mOpen[i].id, IsSpecial) && !is(mOpen[i].id, PassesItems)) return;
    }
}

void OpenElements::closeFor(int id)
{
    if (inForeign()) {
        if (!is(id, BreaksOut)) return;
        size_t keep = mOpen.size();
        while (keep > 0 && mOpen[keep - 1].foreign && !is(mOpen[keep - 1].id, TakesHtml))
            --keep;
        popFrom(keep);
    }
    if (id == mLi) closeItem({mLi});
    if (id == mDt || id == mDd) closeItem({mDt, mDd});
    if (is(id, ClosesParagraph) && mCount[size_t(mP)])
        if (const int p = scoped(mP, EndsScope, mButton); p >= 0) popFrom(size_t(p));
    if ((id == mOption || id == mOptgroup) && top() == mOption) popFrom(mOpen.size() - 1);
    if (id == mOptgroup && top() == mOptgroup) popFrom(mOpen.size() - 1);
    if (is(id, IsRuby))
        while (!mOpen.empty() && is(top(), IsRuby))
            popFrom(mOpen.size() - 1);
    if (is(id, IsHeading) && !mOpen.empty() && is(top(), IsHeading)) popFrom(mOpen.size() - 1);
    if (id == mA || id == mNobr) closeFormatting(id);
    if (id == mButton)
        if (const int at = scoped(id, EndsScope); at >= 0) popFrom(size_t(at));
    if (!mCount[size_t(mTable)]) return;
    if (is(id, IsCell)) popBelow({mTr, mTbody, mThead, mTfoot, mTable});
    if (id == mTr) popBelow({mTbody, mThead, mTfoot, mTable});
    if (id == mCol && top() == mColgroup) return;
    if (is(id, IsSection) || (is(id, IsTablePart) && id != mTable && id != mTr && !is(id, IsCell)) || id == mCol)
        popBelow({mTable});
}

std::vector<int> OpenElements::impliedFor(int id) const
{
    const int at = top();
    if (at < 0 || mOpen.back().foreign) return {};
    if (is(id, IsCell)) {
        if (at == mTable) return {mTbody, mTr};
        if (is(at, IsSection)) return {mTr};
    }
    if (id == mTr && at == mTable) return {mTbody};
    if (id == mCol && at == mTable) return {mColgroup};
    return {};
}

void OpenElements::open(int id)
{
    if (is(id, IsTablePart) && id != mTable && !mCount[size_t(mTable)] && !inForeign())
        return; // outside of tables they are nothing
    for (const int implied : impliedFor(id))
        push(implied);
    push(id);
}

void OpenElements::eraseFormatting(size_t index)
{
    if (mFormatting[index].waits) {
        --mWaiting;
    } else {
        // The list and the open elements name it in the same order from the end.
        size_t later = 0;
        for (size_t i = index + 1; i < mFormatting.size(); ++i)
            later += mFormatting[i].id == mFormatting[index].id && !mFormatting[i].waits;
        for (size_t i = mOpen.size(); i-- > 0;)
            if (mOpen[i].id == mFormatting[index].id && mOpen[i].formats && later-- == 0) {
                mOpen[i].formats = false;
                break;
            }
    }
    mFormatting.erase(mFormatting.begin() + std::ptrdiff_t(index));
}

void OpenElements::openFormatting(int id, const QByteArray &whole)
{
    int same = 0;
    size_t first = 0;
    for (size_t i = mFormatting.size(); i-- > 0 && mFormatting[i].id >= 0;)
        if (mFormatting[i].id == id && mFormatting[i].whole == whole) {
            ++same;
            first = i;
        }
    if (same >= 3) eraseFormatting(first);
    push(id);
    mOpen.back().formats = true;
    mFormatting.push_back({id, whole, false});
}

// An end tag of a formatting element. What it crosses stays open where a block is among it. False where no such element
// is known since the last boundary.
bool OpenElements::closeFormatting(int id)
{
    size_t found = mFormatting.size();
    for (size_t i = mFormatting.size(); i-- > 0 && mFormatting[i].id >= 0;)
        if (mFormatting[i].id == id) {
            found = i;
            break;
        }
    if (found == mFormatting.size()) return false;
    if (mFormatting[found].waits) {
        eraseFormatting(found);
        return true;
    }
    const int at = scoped(id, EndsScope);
    if (at < 0) return true;
    eraseFormatting(found);
    bool block = false;
    for (size_t i = size_t(at) + 1; i < mOpen.size(); ++i)
        block = block || is(mOpen[i].id, IsSpecial);
    if (!block) {
        popFrom(size_t(at));
    } else {
        mOpen.erase(mOpen.begin() + at);
        --mCount[size_t(id)];
    }
    return true;
}

void OpenElements::closePlain(int id)
{
    if (!mCount[size_t(id)]) return;
    for (size_t i = mOpen.size(); i-- > 0;) {
        if (mOpen[i].id == id) return popFrom(i);
        if (is(mOpen[i].id, IsSpecial)) return;
    }
}

void OpenElements::close(int id)
{
    if (inForeign() && mCount[size_t(id)]) {
        for (size_t i = mOpen.size(); i-- > 0 && mOpen[i].foreign;)
            if (mOpen[i].id == id) return popFrom(i);
    }
    if (is(id, IsFormatting) && closeFormatting(id)) return;
    if (is(id, IsTablePart)) {
        for (size_t i = mOpen.size(); mCount[size_t(id)] && i-- > 0;) {
            if (mOpen[i].id == id) return popFrom(i);
            if (mOpen[i].id == mTable) return;
        }
        return;
    }
    if (is(id, IsHeading)) { // any heading's end tag ends any heading
        for (size_t i = mOpen.size(); i-- > 0 && !is(mOpen[i].id, EndsScope);)
            if (is(mOpen[i].id, IsHeading)) return popFrom(i);
        return;
    }
    if (!is(id, EndsItself)) return closePlain(id);
    const int at = scoped(id, id == mLi ? EndsScope | EndsItems : uint32_t(EndsScope), id == mP ? mButton : -1);
    if (at < 0) return;
    if (id != mForm) return popFrom(size_t(at));
    // What it crosses stays open, and stands in the form still, which no end tag finds any more.
    --mCount[size_t(id)];
    mOpen[size_t(at)].id = mClosed;
    ++mCount[size_t(mClosed)];
}

} // namespace html
