// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/changes/ChangeTracker.h"

#include "base/Clock.h"
#include "engine/changes/EditScope.h"
#include "engine/dom/CharacterData.h"
#include "engine/dom/RawTree.h"

#include <QPointer>
#include <QRandomGenerator>

namespace changes {

using namespace dom;

namespace {

NodeId idOf(const Node *node)
{
    return node ? node->id() : 0;
}

bool isInput(Kind kind)
{
    return kind == Kind::TextIn || kind == Kind::TextOut || kind == Kind::Command;
}

} // namespace

ChangeTracker::ChangeTracker(Document &document)
    : mDocument(document), mLastStep(uint64_t(QRandomGenerator::global()->generate()) << 16)
{
    document.door = this;
}

ChangeTracker::~ChangeTracker()
{
    Waiting::remove(*this);
    if (mDocument.door == this) mDocument.door = nullptr;
}

void ChangeTracker::selectionSettled()
{
    if (mKeeper) mLeft = mKeeper->savedSelection();
}

// Primitives

void ChangeTracker::insert(ParentNode &parent, Node &child, Node *before)
{
    begin(Kind::Write);
    RawTree::insert(parent, child, before);
    Primitive p;
    p.op = Op::Insert;
    p.parent = parent.id();
    p.before = idOf(before);
    p.node = child.id();
    p.subtree = writeSubtree(child);
    add(p);
    touch(&parent);
    end(false);
}

void ChangeTracker::remove(Node &child)
{
    begin(Kind::Write);
    Primitive p;
    p.op = Op::Remove;
    p.parent = idOf(child.parentNode());
    p.before = idOf(child.nextSibling());
    p.node = child.id();
    p.subtree = writeSubtree(child);
    ParentNode *parent = child.parentNode();
    leaving(child);
    mTakenOut.emplace_back(&child);
    RawTree::remove(child);
    add(p);
    touch(parent);
    end(false);
}

void ChangeTracker::move(ParentNode &parent, Node &child, Node *before)
{
    if (child.parentNode() == &parent && (child.nextSibling() == before || &child == before)) return;
    begin(Kind::Write);
    Primitive p;
    p.op = Op::Move;
    p.node = child.id();
    p.oldParent = idOf(child.parentNode());
    p.oldBefore = idOf(child.nextSibling());
    p.parent = parent.id();
    p.before = idOf(before);
    touch(child.parentNode());
    leaving(child);
    RawTree::move(parent, child, before);
    add(p);
    touch(&parent);
    end(false);
}

void ChangeTracker::replaceText(CharacterData &node, uint32_t offset, uint32_t count, const QString &with)
{
    Primitive p;
    p.op = Op::Text;
    p.node = node.id();
    p.offset = offset;
    p.oldText = node.data().mid(offset, count);
    p.newText = with;
    if (p.oldText == p.newText) return;
    begin(Kind::Write);
    RawTree::replaceText(node, offset, count, with);
    add(p);
    touch(node.parentNode());
    end(false);
}

void ChangeTracker::setAttribute(Element &element, Atom name, const QString *value)
{
    Primitive p;
    p.op = Op::Attribute;
    p.node = element.id();
    p.name = name.text();
    const auto &list = element.attributeList();
    p.offset = uint32_t(list.size());
    for (uint32_t i = 0; i < list.size(); ++i)
        if (list[i].name == name) {
            p.offset = i;
            p.had = true;
            p.oldText = list[i].value;
        }
    p.has = value != nullptr;
    if (value) p.newText = *value;
    if (p.had == p.has && p.oldText == p.newText) return;
    begin(Kind::Write);
    RawTree::setAttribute(element, name, value);
    add(p);
    touch(&element);
    end(false);
}

void ChangeTracker::setHeldOpen(Element &element, bool heldOpen)
{
    if (element.isHeldOpen() == heldOpen) return;
    begin(Kind::Write);
    RawTree::setHeldOpen(element, heldOpen);
    Primitive p;
    p.op = Op::HeldOpen;
    p.node = element.id();
    p.has = heldOpen;
    add(p);
    touch(&element);
    end(false);
}

// Steps

void ChangeTracker::begin(Kind kind)
{
    if (mDepth++ > 0) return;
    mKind = kind;
    mFailed = false;
    mPrimitives.clear();
    // Already now: what follows from the step may want to wait for its record.
    if (!mLogs.empty()) Waiting::add(*this);
    if (mKeeper) mKeeper->stepBegins();
    if (mKeeper && isInput(kind)) mBefore = mKeeper->savedSelection();
}

void ChangeTracker::end(bool failed)
{
    mFailed = mFailed || failed;
    if (--mDepth > 0) return;
    const auto takenOut = std::exchange(mTakenOut, {}); // goes at the end
    if (mFailed) {
        invertOpenStep();
        return;
    }
    if (mPrimitives.empty() && !mPlaying) {
        if (mKeeper) mKeeper->stepEnds({});
        return;
    }
    writeRecord();
}

void ChangeTracker::add(const Primitive &primitive)
{
    mPrimitives.push_back(primitive);
}

void ChangeTracker::invertOpenStep()
{
    const std::vector<Primitive> done = std::exchange(mPrimitives, {});
    ++mDepth; // what the inversion does belongs to nothing
    for (size_t i = done.size(); i-- > 0;) apply(done[i].inverse());
    --mDepth;
    mPrimitives.clear();
    mFailed = false;
    if (mKeeper) mKeeper->stepFails();
    if (mKeeper && isInput(mKind)) mKeeper->restoreSelection(mBefore);
}

void ChangeTracker::writeRecord()
{
    const bool keeps = mKeeper && isInput(mKind);
    SavedSelection after;
    if (mKeeper) after = mKeeper->savedSelection();
    if (keeps && mBefore != mLeft) store(Record::selectionRecord(mBefore));
    const StepName step = mPlaying && mPlayed.number ? mPlayed : StepName{++mLastStep, false};
    if (mKeeper) mKeeper->stepEnds(step);
    Writer writer;
    const bool selections = keeps || (mPlaying && mKeeper);
    Record::writeHead(writer, mKind, step, selections ? &mBefore : nullptr, selections ? &after : nullptr);
    for (const Primitive &primitive : mPrimitives) primitive.write(writer);
    mPrimitives.clear();
    mLeft = after;
    store(writer.take());
    recordsWait();
}

void ChangeTracker::store(const QByteArray &record)
{
    ++mRecordCount;
    for (const auto &log : mLogs) log->append(record);
    if (mLogs.empty() && !mPlaying) keepOwn(record);
    if (journal) journal(record);
    if (onRecord) onRecord(record);
}

void ChangeTracker::recordsWait()
{
    if (mLogs.empty()) return;
    Waiting::add(*this);
    if ((EditScope::isOpen() && !mTelling) || mPosted) return;
    mPosted = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            mPosted = false;
            Waiting::remove(*this);
            tellSinks();
        },
        Qt::QueuedConnection);
}

void ChangeTracker::tellSinks()
{
    if (mDepth > 0 || mTelling) {
        Waiting::add(*this);
        return;
    }
    mTelling = true;
    // Who is told may drop a log, its own or another's, and the document with its tracker.
    const QPointer<ChangeTracker> alive(this);
    const auto logs = mLogs;
    for (const auto &log : logs) {
        const bool still = std::find(mLogs.begin(), mLogs.end(), log) != mLogs.end();
        if (still && !log->isEmpty() && log->sink()) log->sink()->notify();
        if (!alive) return;
    }
    mTelling = false;
}

// Logs and playback

base::Ref<ChangeLog> ChangeTracker::createLog(Sink *sink)
{
    mOwnUndo.clear();
    mOwnRedo.clear();
    auto log = base::make<ChangeLog>(sink);
    mLogs.push_back(log);
    return log;
}

void ChangeTracker::dropLog(ChangeLog &log)
{
    std::erase_if(mLogs, [&log](const auto &other) { return other.get() == &log; });
}

Node *ChangeTracker::topOf(const QByteArray &subtree) const
{
    Reader reader(subtree);
    reader.byte();
    return mDocument.nodeById(reader.number32());
}

void ChangeTracker::apply(const Primitive &p)
{
    // A record that doesn't fit the tree (its neighbours were dropped, or it is damaged) does what it can and no harm.
    Node *node = mDocument.nodeById(p.node);
    Node *parentNode = p.parent ? mDocument.nodeById(p.parent) : &mDocument;
    Node *before = p.before ? mDocument.nodeById(p.before) : nullptr;
    auto *parent = parentNode && parentNode->isConnected() && parentNode->isElement()
                       ? static_cast<ParentNode *>(parentNode)
                       : nullptr;
    if (before && before->parentNode() != parent) before = nullptr;
    switch (p.op) {
    case Op::Insert:
        if (Node *there = topOf(p.subtree); parent && !(there && there->isConnected()))
            if (Ref<Node> top = revive(mDocument, p.subtree); top && !top->isConnected()) insert(*parent, *top, before);
        break;
    case Op::Remove: {
        Node *top = topOf(p.subtree);
        if (top && top->isConnected() && top->parentElement() && !mDocument.isSkeleton(*top)) remove(*top);
        break;
    }
    case Op::Move:
        if (node && parent && node->isConnected() && node->parentElement() && !node->contains(*parent) &&
            !mDocument.isSkeleton(*node))
            move(*parent, *node, before);
        break;
    case Op::Text:
        if (node && node->isConnected() && (node->isText() || node->isComment())) {
            auto &text = static_cast<CharacterData &>(*node);
            if (p.offset <= text.length() && QStringView(text.data()).mid(p.offset).startsWith(p.oldText))
                replaceText(text, p.offset, uint32_t(p.oldText.size()), p.newText);
        }
        break;
    case Op::Attribute:
        if (Element *element = node && node->isConnected() ? node->asElement() : nullptr) {
            const Atom name(p.name);
            if (p.has && !element->hasAttribute(name)) { // back to its place among the others
                begin(Kind::Write);
                RawTree::setAttribute(*element, name, &p.newText, p.offset);
                add(p);
                touch(element);
                end(false);
            } else {
                setAttribute(*element, name, p.has ? &p.newText : nullptr);
            }
        }
        break;
    case Op::HeldOpen:
        if (Element *element = node && node->isConnected() ? node->asElement() : nullptr)
            setHeldOpen(*element, p.has);
        break;
    }
}

void ChangeTracker::play(const QByteArray &bytes, bool forward)
{
    if (mDepth > 0) return; // never from within a step
    Record record;
    const bool sound = Record::read(bytes, record);
    begin(forward ? Kind::Redone : Kind::Undone);
    mPlaying = true;
    if (mKeeper) mBefore = mKeeper->savedSelection();
    const size_t count = sound ? record.primitives.size() : 0;
    for (size_t i = 0; i < count; ++i)
        forward ? apply(record.primitives[i]) : apply(record.primitives[count - 1 - i].inverse());
    mPlayed = {};
    if (sound) mPlayed = {record.step.number, record.step.inverse == forward};
    if (mKeeper && mPlayed.number) mKeeper->stepPlayed(mPlayed);
    if (sound && record.hasSelection && mKeeper) mKeeper->restoreSelection(forward ? record.after : record.before);
    end(false);
    mPlaying = false;
}

// The dirty range

int ChangeTracker::watchDirtyRange()
{
    mDirty[mNextCookie] = {};
    return mNextCookie++;
}

void ChangeTracker::unwatchDirtyRange(int cookie)
{
    mDirty.erase(cookie);
}

ChangeTracker::DirtyRange ChangeTracker::takeDirtyRange(int cookie)
{
    const auto found = mDirty.find(cookie);
    return found == mDirty.end() ? DirtyRange{} : std::exchange(found->second, {});
}

void ChangeTracker::touch(Node *scope)
{
    while (scope && !scope->isElement()) scope = scope->parentNode();
    if (!scope || !scope->isConnected()) return;
    Element *element = scope->asElement();
    for (auto &[cookie, range] : mDirty) {
        if (!range.first || element->compareOrder(*range.first) < 0) range.first = element;
        if (!range.last || element->compareOrder(*range.last) > 0) range.last = element;
    }
}

void ChangeTracker::leaving(Node &node)
{
    for (auto &[cookie, range] : mDirty)
        for (Ref<Element> *end : {&range.first, &range.last})
            if (*end && node.contains(**end)) *end = node.parentElement();
}

// The surface's own history

void ChangeTracker::keepOwn(const QByteArray &record)
{
    constexpr size_t limit = 500;
    const Kind kind = Kind(record[0]);
    const qint64 now = base::Clock::instance().nowMs();
    mOwnRedo.clear();
    const bool typing = kind == Kind::TextIn || kind == Kind::TextOut;
    const bool joins = !mOwnUndo.empty() && (mOwnUndo.back().kind == Kind::Selection ||
                                             (typing && mOwnUndo.back().kind == kind && now - mOwnUndo.back().time <= 3000));
    if (!joins) {
        mOwnUndo.push_back({});
        if (mOwnUndo.size() > limit) mOwnUndo.pop_front();
    }
    OwnStep &step = mOwnUndo.back();
    step.records.push_back(record);
    step.kind = kind;
    step.time = now;
}

void ChangeTracker::undo()
{
    if (!canUndo()) return;
    OwnStep step = std::move(mOwnUndo.back());
    mOwnUndo.pop_back();
    for (size_t i = step.records.size(); i-- > 0;) play(step.records[i], false);
    mOwnRedo.push_back(std::move(step));
}

void ChangeTracker::redo()
{
    if (!canRedo()) return;
    OwnStep step = std::move(mOwnRedo.back());
    mOwnRedo.pop_back();
    for (const QByteArray &record : step.records) play(record, true);
    step.time = 0;
    mOwnUndo.push_back(std::move(step));
}

} // namespace changes
