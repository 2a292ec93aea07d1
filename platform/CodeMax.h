// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/CodeMaxCommands.h"
#include "platform/CodeMaxLongLines.h"
#include "platform/CodeMaxScintilla.h"

#include <QPointer>
#include <utility>

class SourceLexer;

/// A place in the source editor. Lines and columns count from 0, columns in UTF-16 units.
struct CodeMaxPosition
{
    int LineNo = 0;
    int ColNo = 0;
    friend bool operator==(const CodeMaxPosition &, const CodeMaxPosition &) = default;
};

/// A selection: from where it was begun to where the caret is. A new one stands at the start of the text.
struct CodeMaxRange
{
    int StartLineNo = 0;
    int StartColNo = 0;
    int EndLineNo = 0;
    int EndColNo = 0;
    bool IsEmpty() const { return StartLineNo == EndLineNo && StartColNo == EndColNo; }
    friend bool operator==(const CodeMaxRange &, const CodeMaxRange &) = default;
};

/// The source editor, on Scintilla, and the one store of the control's document.
///
/// The text is kept as valid UTF-8: whatever comes in, by a call, the clipboard or a drop, a NUL or a lone surrogate in
/// it becomes U+FFFD, since no other part of the system could hold it. Line ends stay as they come; new ones follow the
/// first one of the text that was set (CR LF where it had none). Offsets and columns are in UTF-16 units; one beyond
/// the end counts as the end, one between two surrogates as before the first. They are found through Scintilla's own
/// line index, so asking costs a line's length and not the document's.
///
/// Signals are raised when an edit is over, never in the middle of it: an event or call that changes the text, however
/// often, raises `Change` once, and `SelChange` behind it if the selection moved.
///
/// Typing is one undo step until the caret moves, a line break is typed, or a pause of more than three seconds.
class CodeMax : public QsciScintilla
{
    Q_OBJECT
    Q_PROPERTY(QString Text READ Text WRITE setText)
    Q_PROPERTY(QString SelText READ SelText WRITE setSelText)
    Q_PROPERTY(int SelStart READ SelStart WRITE setSelStart)
    Q_PROPERTY(int SelEnd READ SelEnd WRITE setSelEnd)
    Q_PROPERTY(int LineCount READ LineCount)
    Q_PROPERTY(QString FindText READ FindText WRITE setFindText)
    Q_PROPERTY(QString ReplText READ ReplText WRITE setReplText)
    Q_PROPERTY(bool ReadOnly READ ReadOnly WRITE setReadOnly)
public:
    explicit CodeMax(QWidget *parent = nullptr);
    ~CodeMax() override;

    QString Text() const;
    /// Writes only if the text differs, as one undo step, also while the editor is read-only; the undo history stays.
    /// The caret goes to the start. Raises no signals of this class.
    void setText(const QString &text) override;
    Q_INVOKABLE void ClearUndo();

    QString SelText() const;
    void setSelText(const QString &text) { ReplaceSel(text); }
    /// Replaces the selection, or inserts at the caret, which then stands behind the new text. Nothing happens in a
    /// read-only editor.
    Q_INVOKABLE void ReplaceSel(const QString &text);
    /// Inserts at an offset. Selection and caret stay on their characters; a caret at the offset stays before the text.
    Q_INVOKABLE void InsertText(const QString &text, int position);
    void InsertText(const QString &text, const CodeMaxPosition &position);

    /// The selection's lower and upper end. Writing one moves that end; the other goes along where they would cross.
    /// A negative offset raises `invalidValue`.
    int SelStart() const;
    int SelEnd() const;
    void setSelStart(int offset);
    void setSelEnd(int offset);
    /// `Normalised`: the lower end first; otherwise the caret stands at the end of the range.
    CodeMaxRange GetSel(bool Normalised) const;
    /// The caret goes to the range's end. The view scrolls only if told to.
    void SetSel(const CodeMaxRange &Range, bool MakeVisible);

    int LineCount() const;
    /// The text of a line from 0, without its end; "" beyond the last.
    QString LineText(int line) const;
    /// The text from one offset to another.
    QString TextBetween(int start, int end) const;
    CodeMaxPosition PositionOf(int offset) const;
    int OffsetOf(const CodeMaxPosition &position) const;

    bool ReadOnly() const { return isReadOnly(); }
    quintptr hWnd() const { return quintptr(winId()); }
    /// The character's rectangle in pixels of this widget; empty where the line isn't in view.
    QRect PosToRect(int line, int column) const;

    /// The offset nearest to a point in pixels of this widget; -1 where no text is.
    int OffsetAt(const QPoint &point) const;
    /// Brings a stretch of text into view, its start before its end.
    void ScrollTo(int start, int end);

    bool CanUndo() const;
    bool CanRedo() const;
    bool CanCut() const;
    bool CanCopy() const;
    bool CanPaste() const;

    QString FindText() const { return mFindText; }
    void setFindText(const QString &text) { mFindText = cleaned(text); }
    QString ReplText() const { return mReplText; }
    void setReplText(const QString &text) { mReplText = cleaned(text); }
    /// How many places the last replace-all has changed.
    int ReplaceCount() const { return mReplaceCount; }

    /// Runs a command of codemax's numbers. False if it failed or isn't known; raises nothing.
    ///
    /// A find starts at the selection's near end and goes round at the document's end; a match that is the selection is
    /// passed over, so that a repeated find goes on, and one within the selection is found. A line end in the text that
    /// is sought matches any line end. One that finds nothing leaves the selection, sets `ErrorState` and raises
    /// `CmdFailure`; so do a bad regular expression and a replace-all that can't.
    Q_INVOKABLE bool ExecuteCmd(int Command);
    /// The failure of the last command that failed; 0 for none since it was cleared.
    Q_INVOKABLE int ErrorState() const { return mErrorState; }
    Q_INVOKABLE void ClearErrorState() { mErrorState = codemax::noError; }

    /// A text that every part of the system can hold: U+FFFD for NULs and lone surrogates.
    static QString cleaned(QString text);

Q_SIGNALS:
    void Change();
    void SelChange();
    void CmdFailure(int Command, int Code);
    /// In place of a menu of the editor's own; the pointer's or the caret's place on the screen is known to the host.
    void ContextMenu();
    /// A key of Qt::Key was let go.
    void KeyUp(int Key);
    /// Alt+Enter: a person asks for the editor's properties.
    void ShowProps();

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    QByteArray fromMimeData(const QMimeData *source, bool &rectangular) const override;

private:
    struct Match
    {
        qsizetype start = -1;
        qsizetype end = -1;
        QString replacement;
    };
    enum class Direction { Forward, Backward };
    class Searcher;

    /// Runs a part of an edit; the outermost tells of the whole.
    template <class Edit> void edit(Edit edit);
    void setNotices(bool afterInsertion);
    void noteChange(int position, int type, const char *text, int length);
    void tell();
    void tellLater();
    void noteTyping(bool isEnter);
    long send(unsigned int message, unsigned long wParam = 0, long lParam = 0) const;
    QString textOf(long start, long end) const;
    long byteOf(int offset) const;
    long byteOf(const CodeMaxPosition &position) const;
    int offsetOfByte(long position) const;
    CodeMaxPosition positionOfByte(long position) const;
    std::pair<long, long> selectionBytes() const; // anchor and caret
    void replaceBytes(long start, long end, const QByteArray &bytes);
    bool replaceDifference(const QByteArray &bytes);
    void takeLineEnds(const QString &text);

    bool isSelectionLong() const;
    void deleteSelection();
    void moveSelection(long to);

    bool fail(int command, int code);
    bool runEditCommand(int command);
    bool setSearchOption(int command);
    bool find(int command, Direction direction);
    bool replaceAll();

    void setUpKeys();
    void setUpLooks();
    void applyPalette();
    void fitLineNumbers();

    QString mFindText;
    QString mReplText;
    bool mMatchCase = false;
    bool mWholeWord = false;
    bool mRegExp = false;
    int mReplaceCount = 0;
    int mErrorState = codemax::noError;

    SourceLexer *mLexer = nullptr;
    LongLines mLongLines{*this};
    int mNumberDigits = 0;
    int mEditDepth = 0;
    bool mModified = false;
    bool mTellPending = false;
    bool mSilent = false;
    bool mPressed = false; // the mouse is
    std::pair<long, long> mToldSelection{0, 0};
    qint64 mTypedMs = 0; // when a key last typed something
    bool mTypedEnter = false;
};

template <class Edit> void CodeMax::edit(Edit edit)
{
    const QPointer<CodeMax> self(this); // what an event calls may delete the editor
    ++mEditDepth;
    edit();
    if (!self) return;
    if (--mEditDepth == 0) tell();
}
