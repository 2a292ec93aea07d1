// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/CodeMax.h"

#include "base/Error.h"
#include "platform/CodeMaxAccessible.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>
#include <QStringDecoder>

namespace {

/// Bytes of the UTF-8 sequence that this byte begins.
int sequenceLength(unsigned char lead)
{
    return lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// How many bytes hold the first `units` UTF-16 units; a half of a pair isn't counted.
long bytesOfUnits(const char *text, long length, long units)
{
    long at = 0;
    while (at < length && units > 0) {
        const int bytes = sequenceLength(static_cast<unsigned char>(text[at]));
        units -= bytes == 4 ? 2 : 1;
        if (units < 0) break;
        at += bytes;
    }
    return std::min(at, length);
}

/// Unlike QString::fromUtf8 it keeps a mark at the start, which may be text.
QString decoded(const char *bytes, long length)
{
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::ConvertInitialBom);
    return decoder(QByteArrayView(bytes, length));
}

bool isContinuation(char byte)
{
    return (byte & 0xC0) == 0x80;
}

} // namespace

CodeMax::CodeMax(QWidget *parent) : QsciScintilla(parent)
{
    CodeMaxAccessible::install();
    setUtf8(true);
    setEolMode(EolWindows);
    send(SCI_ALLOCATELINECHARACTERINDEX, SC_LINECHARACTERINDEX_UTF16);
    send(SCI_USEPOPUP, 0);
    setUpKeys();
    setUpLooks();
    setNotices(false);
    connect(this, &QsciScintillaBase::SCN_MODIFIED, this, &CodeMax::noteChange);
    // Comes late, with the next painting; it is for moves that no event or call of ours brings.
    connect(this, &QsciScintillaBase::SCN_UPDATEUI, this, [this] {
        if (mEditDepth == 0 && selectionBytes() != mToldSelection) tellLater();
    });
}

CodeMax::~CodeMax() = default;

long CodeMax::send(unsigned int message, unsigned long wParam, long lParam) const
{
    return SendScintilla(message, wParam, lParam);
}

QString CodeMax::cleaned(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = std::as_const(text)[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && std::as_const(text)[i + 1].isLowSurrogate())
            ++i;
        else if (c.isNull() || c.isSurrogate())
            text[i] = QChar(QChar::ReplacementCharacter);
    }
    return text;
}

// Signals

/// QScintilla answers the notice that follows a change with an event for assistive technology, for which it counts all
/// characters in front, also while nobody is there to receive it. So we have only the one before the change sent, and
/// the one after it only where much comes in. The marks of who did it and how are part of the mask: each of them alone
/// would bring the other.
void CodeMax::setNotices(bool afterInsertion)
{
    constexpr long unwanted = SC_MOD_INSERTTEXT | SC_MOD_DELETETEXT | SC_PERFORMED_USER | SC_PERFORMED_UNDO |
                              SC_PERFORMED_REDO | SC_MULTISTEPUNDOREDO | SC_LASTSTEPINUNDOREDO | SC_MULTILINEUNDOREDO |
                              SC_STARTACTION;
    const long notices = (send(SCI_GETMODEVENTMASK) & ~unwanted) | SC_MOD_BEFOREINSERT | SC_MOD_BEFOREDELETE |
                         (afterInsertion ? SC_MOD_INSERTTEXT : 0);
    send(SCI_SETMODEVENTMASK, static_cast<unsigned long>(notices));
}

void CodeMax::noteChange(int position, int type, const char *text, int length)
{
    if (type & SC_MOD_INSERTTEXT) {
        setNotices(false);
        mLongLines.arrived(position, position + length);
        return;
    }
    if (!(type & (SC_MOD_BEFOREINSERT | SC_MOD_BEFOREDELETE))) return;
    if ((type & SC_MOD_BEFOREINSERT) && length > LongLines::longLine) setNotices(true);
    if (!mSilent) mModified = true;
    if (mEditDepth == 0) tellLater(); // what comes after it is over before the call is made
    if (!QAccessible::isActive()) return;
    const int offset = offsetOfByte(position);
    if (type & SC_MOD_BEFOREDELETE) {
        QAccessibleTextRemoveEvent event(this, offset, textOf(position, position + length));
        QAccessible::updateAccessibility(&event);
    } else if (text) {
        QAccessibleTextInsertEvent event(this, offset, decoded(text, length));
        QAccessible::updateAccessibility(&event);
    }
}

void CodeMax::tell()
{
    const QPointer<CodeMax> self(this);
    fitLineNumbers();
    if (!mPressed) mLongLines.follow(); // else the text would slip away under the pointer that selects it
    const bool moved = selectionBytes() != mToldSelection;
    mToldSelection = selectionBytes();
    if (std::exchange(mModified, false)) Q_EMIT Change();
    if (!self || !moved) return;
    if (QAccessible::isActive()) {
        const CodeMaxRange range = GetSel(false);
        QAccessibleTextCursorEvent event(this, OffsetOf({range.EndLineNo, range.EndColNo}));
        QAccessible::updateAccessibility(&event);
    }
    Q_EMIT SelChange();
}

void CodeMax::tellLater()
{
    if (std::exchange(mTellPending, true)) return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            mTellPending = false;
            if (mEditDepth == 0) tell();
        },
        Qt::QueuedConnection);
}

// Text

QString CodeMax::textOf(long start, long end) const
{
    if (start >= end) return {};
    const auto *bytes = reinterpret_cast<const char *>(
        static_cast<intptr_t>(send(SCI_GETRANGEPOINTER, static_cast<unsigned long>(start), end - start)));
    return decoded(bytes, end - start);
}

QString CodeMax::Text() const
{
    return textOf(0, send(SCI_GETLENGTH));
}

void CodeMax::replaceBytes(long start, long end, const QByteArray &bytes)
{
    send(SCI_SETTARGETRANGE, static_cast<unsigned long>(start), end);
    SendScintilla(SCI_REPLACETARGET, static_cast<unsigned long>(bytes.size()), bytes.constData());
}

/// Only what lies between the common ends is replaced: the undo history then holds no second copy of the document.
/// False if the text is that already.
bool CodeMax::replaceDifference(const QByteArray &bytes)
{
    const long length = send(SCI_GETLENGTH);
    const auto *old = reinterpret_cast<const char *>(static_cast<intptr_t>(send(SCI_GETCHARACTERPOINTER)));
    const long shorter = std::min(length, long(bytes.size()));
    long head = std::mismatch(old, old + shorter, bytes.cbegin()).first - old;
    if (head == length && head == bytes.size()) return false;
    while (head > 0 &&
           ((head < length && isContinuation(old[head])) || (head < bytes.size() && isContinuation(bytes.at(head)))))
        --head;
    long tail = 0;
    while (tail < shorter - head && old[length - 1 - tail] == bytes.at(bytes.size() - 1 - tail))
        ++tail;
    while (tail > 0 && isContinuation(old[length - tail]))
        --tail;
    replaceBytes(head, length - tail, bytes.mid(head, bytes.size() - tail - head));
    return true;
}

void CodeMax::takeLineEnds(const QString &text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == u'\n') return setEolMode(EolUnix);
        if (c == u'\r') return setEolMode(i + 1 < text.size() && text.at(i + 1) == u'\n' ? EolWindows : EolMac);
    }
    setEolMode(EolWindows);
}

void CodeMax::setText(const QString &text)
{
    const QString clean = cleaned(text);
    const bool readOnly = isReadOnly();
    const bool silent = std::exchange(mSilent, true);
    ++mEditDepth;
    if (readOnly) send(SCI_SETREADONLY, 0);
    send(SCI_BEGINUNDOACTION);
    const bool changed = replaceDifference(clean.toUtf8());
    send(SCI_ENDUNDOACTION);
    if (readOnly) send(SCI_SETREADONLY, 1);
    mSilent = silent;
    --mEditDepth;
    if (!changed) return;
    takeLineEnds(clean);
    send(SCI_GOTOPOS, 0);
    mToldSelection = selectionBytes();
    fitLineNumbers();
}

void CodeMax::ClearUndo()
{
    send(SCI_EMPTYUNDOBUFFER);
}

QString CodeMax::SelText() const
{
    const auto [anchor, caret] = selectionBytes();
    return textOf(std::min(anchor, caret), std::max(anchor, caret));
}

void CodeMax::ReplaceSel(const QString &text)
{
    edit([&] {
        if (isReadOnly()) return;
        const QByteArray bytes = cleaned(text).toUtf8();
        const auto [anchor, caret] = selectionBytes();
        const long start = std::min(anchor, caret);
        send(SCI_BEGINUNDOACTION);
        replaceBytes(start, std::max(anchor, caret), bytes);
        send(SCI_ENDUNDOACTION);
        send(SCI_GOTOPOS, static_cast<unsigned long>(start + bytes.size()));
    });
}

void CodeMax::InsertText(const QString &text, int position)
{
    if (position < 0) throw base::Error(base::errors::invalidValue, tr("Invalid property value"));
    edit([&] {
        const long at = byteOf(position);
        replaceBytes(at, at, cleaned(text).toUtf8());
    });
}

void CodeMax::InsertText(const QString &text, const CodeMaxPosition &position)
{
    InsertText(text, OffsetOf(position));
}

// Places

std::pair<long, long> CodeMax::selectionBytes() const
{
    return {send(SCI_GETANCHOR), send(SCI_GETCURRENTPOS)};
}

long CodeMax::byteOf(int offset) const
{
    if (offset <= 0) return 0;
    const long line = send(SCI_LINEFROMINDEXPOSITION, static_cast<unsigned long>(offset), SC_LINECHARACTERINDEX_UTF16);
    const long start = send(SCI_POSITIONFROMLINE, static_cast<unsigned long>(line));
    const long before = send(SCI_INDEXPOSITIONFROMLINE, static_cast<unsigned long>(line), SC_LINECHARACTERINDEX_UTF16);
    const long next = line + 1 < send(SCI_GETLINECOUNT)
                          ? send(SCI_POSITIONFROMLINE, static_cast<unsigned long>(line + 1))
                          : send(SCI_GETLENGTH);
    if (next <= start) return start;
    const auto *bytes = reinterpret_cast<const char *>(
        static_cast<intptr_t>(send(SCI_GETRANGEPOINTER, static_cast<unsigned long>(start), next - start)));
    return start + bytesOfUnits(bytes, next - start, offset - before);
}

long CodeMax::byteOf(const CodeMaxPosition &position) const
{
    if (position.LineNo < 0) return 0;
    if (position.LineNo >= send(SCI_GETLINECOUNT)) return send(SCI_GETLENGTH);
    const auto line = static_cast<unsigned long>(position.LineNo);
    const long start = send(SCI_POSITIONFROMLINE, line);
    const long end = send(SCI_GETLINEENDPOSITION, line);
    if (end <= start || position.ColNo <= 0) return start;
    const auto *bytes = reinterpret_cast<const char *>(
        static_cast<intptr_t>(send(SCI_GETRANGEPOINTER, static_cast<unsigned long>(start), end - start)));
    return start + bytesOfUnits(bytes, end - start, position.ColNo);
}

CodeMaxPosition CodeMax::positionOfByte(long position) const
{
    const long line = send(SCI_LINEFROMPOSITION, static_cast<unsigned long>(position));
    const long start = send(SCI_POSITIONFROMLINE, static_cast<unsigned long>(line));
    return {int(line), int(send(SCI_COUNTCODEUNITS, static_cast<unsigned long>(start), position))};
}

int CodeMax::offsetOfByte(long position) const
{
    const CodeMaxPosition place = positionOfByte(position);
    const auto line = static_cast<unsigned long>(place.LineNo);
    return int(send(SCI_INDEXPOSITIONFROMLINE, line, SC_LINECHARACTERINDEX_UTF16)) + place.ColNo;
}

QString CodeMax::TextBetween(int start, int end) const
{
    return textOf(byteOf(start), byteOf(end));
}

int CodeMax::OffsetAt(const QPoint &point) const
{
    const QPoint inside = viewport()->mapFrom(this, point);
    const long at = send(SCI_POSITIONFROMPOINTCLOSE, static_cast<unsigned long>(inside.x()), inside.y());
    return at < 0 ? -1 : offsetOfByte(at);
}

void CodeMax::ScrollTo(int start, int end)
{
    send(SCI_SCROLLRANGE, static_cast<unsigned long>(byteOf(end)), byteOf(start));
}

CodeMaxPosition CodeMax::PositionOf(int offset) const
{
    return positionOfByte(byteOf(offset));
}

int CodeMax::OffsetOf(const CodeMaxPosition &position) const
{
    return offsetOfByte(byteOf(position));
}

int CodeMax::SelStart() const
{
    return offsetOfByte(send(SCI_GETSELECTIONSTART));
}

int CodeMax::SelEnd() const
{
    return offsetOfByte(send(SCI_GETSELECTIONEND));
}

void CodeMax::setSelStart(int offset)
{
    if (offset < 0) throw base::Error(base::errors::invalidValue, tr("Invalid property value"));
    edit([&] {
        const long start = byteOf(offset);
        const long end = std::max(start, send(SCI_GETSELECTIONEND));
        send(SCI_SETSELECTION, static_cast<unsigned long>(end), start);
    });
}

void CodeMax::setSelEnd(int offset)
{
    if (offset < 0) throw base::Error(base::errors::invalidValue, tr("Invalid property value"));
    edit([&] {
        const long end = byteOf(offset);
        const long start = std::min(end, send(SCI_GETSELECTIONSTART));
        send(SCI_SETSELECTION, static_cast<unsigned long>(end), start);
    });
}

CodeMaxRange CodeMax::GetSel(bool Normalised) const
{
    auto [start, end] = selectionBytes();
    if (Normalised && start > end) std::swap(start, end);
    const CodeMaxPosition from = positionOfByte(start), to = positionOfByte(end);
    return {from.LineNo, from.ColNo, to.LineNo, to.ColNo};
}

void CodeMax::SetSel(const CodeMaxRange &Range, bool MakeVisible)
{
    edit([&] {
        const long anchor = byteOf(CodeMaxPosition{Range.StartLineNo, Range.StartColNo});
        const long caret = byteOf(CodeMaxPosition{Range.EndLineNo, Range.EndColNo});
        send(SCI_SETSELECTION, static_cast<unsigned long>(caret), anchor);
        if (MakeVisible) send(SCI_SCROLLRANGE, static_cast<unsigned long>(anchor), caret);
    });
}

int CodeMax::LineCount() const
{
    return int(send(SCI_GETLINECOUNT));
}

QString CodeMax::LineText(int line) const
{
    if (line < 0 || line >= LineCount()) return {};
    const auto number = static_cast<unsigned long>(line);
    return textOf(send(SCI_POSITIONFROMLINE, number), send(SCI_GETLINEENDPOSITION, number));
}

QRect CodeMax::PosToRect(int line, int column) const
{
    const long at = byteOf(CodeMaxPosition{line, column});
    const long next = send(SCI_POSITIONAFTER, static_cast<unsigned long>(at));
    const QPoint corner(int(send(SCI_POINTXFROMPOSITION, 0, at)), int(send(SCI_POINTYFROMPOSITION, 0, at)));
    const long onLine = send(SCI_LINEFROMPOSITION, static_cast<unsigned long>(at));
    const int height = int(send(SCI_TEXTHEIGHT, static_cast<unsigned long>(onLine)));
    int width = 1;
    if (next > at && send(SCI_LINEFROMPOSITION, static_cast<unsigned long>(next)) == onLine)
        width = std::max(1, int(send(SCI_POINTXFROMPOSITION, 0, next)) - corner.x());
    const QRect place(corner, QSize(width, height));
    if (place.bottom() < 0 || place.top() > viewport()->height()) return {};
    return place.translated(viewport()->mapTo(this, QPoint()));
}

// Commands

bool CodeMax::CanUndo() const
{
    return !isReadOnly() && send(SCI_CANUNDO);
}

bool CodeMax::CanRedo() const
{
    return !isReadOnly() && send(SCI_CANREDO);
}

bool CodeMax::CanCut() const
{
    return !isReadOnly() && CanCopy();
}

bool CodeMax::CanCopy() const
{
    return !send(SCI_GETSELECTIONEMPTY);
}

bool CodeMax::CanPaste() const
{
    if (isReadOnly()) return false;
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasText(); // Scintilla's own answer doesn't look at the clipboard
}

bool CodeMax::fail(int command, int code)
{
    mErrorState = code;
    Q_EMIT CmdFailure(command, code);
    return false;
}

bool CodeMax::runEditCommand(int command)
{
    const auto run = [this](unsigned int message, bool possible = true) {
        if (possible) edit([&] { send(message); });
        return possible;
    };
    const auto runOnSelection = [this](unsigned int message, bool possible) {
        if (!possible) return false;
        edit([&] {
            if (!isSelectionLong()) return void(send(message));
            send(SCI_BEGINUNDOACTION);
            if (message == SCI_CUT) send(SCI_COPY);
            deleteSelection();
            if (message == SCI_PASTE) send(SCI_PASTE);
            send(SCI_ENDUNDOACTION);
        });
        return true;
    };
    switch (command) {
    case codemax::undo:
        return run(SCI_UNDO, CanUndo());
    case codemax::redo:
        return run(SCI_REDO, CanRedo());
    case codemax::paste:
        return runOnSelection(SCI_PASTE, CanPaste());
    case codemax::deleteSelection:
        return runOnSelection(SCI_CLEAR, !ReadOnly());
    case codemax::cut:
        return runOnSelection(SCI_CUT, CanCut());
    case codemax::copy:
        return run(SCI_COPY, CanCopy());
    case codemax::selectAll:
        return run(SCI_SELECTALL);
    default:
        return false;
    }
}

bool CodeMax::ExecuteCmd(int Command)
{
    switch (Command) {
    case codemax::findNext:
        return find(Command, Direction::Forward);
    case codemax::findPrevious:
        return find(Command, Direction::Backward);
    case codemax::replaceAll:
        return replaceAll();
    default:
        return setSearchOption(Command) || runEditCommand(Command);
    }
}
