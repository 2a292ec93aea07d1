// SPDX-License-Identifier: GPL-3.0-or-later
// The source editor's keys, colours and margins.
#include "platform/CodeMax.h"
#include "platform/SourceLexer.h"

#include <QFontDatabase>

namespace {

constexpr int lineNumberMargin = 0;
constexpr int leastNumberDigits = 3;

/// Scintilla's own bindings that HotKeys decides about.
constexpr QsciCommand::Command decidedElsewhere[] = {
    QsciCommand::Undo,  QsciCommand::Redo,      QsciCommand::SelectionCut, QsciCommand::SelectionCopy,
    QsciCommand::Paste, QsciCommand::SelectAll, QsciCommand::Delete,
};

/// Bindings that would keep a host's accelerators from it, or that change much by a slip.
constexpr QsciCommand::Command unwanted[] = {
    QsciCommand::LineCut,
    QsciCommand::LineDelete,
    QsciCommand::LineCopy,
    QsciCommand::LineTranspose,
    QsciCommand::LineDuplicate,
    QsciCommand::SelectionDuplicate,
    QsciCommand::SelectionLowerCase,
    QsciCommand::SelectionUpperCase,
    QsciCommand::Cancel,
    QsciCommand::EditToggleOvertype,
    QsciCommand::Formfeed,
    // A selection of columns isn't one range, which is all that a caller can ask for.
    QsciCommand::LineDownRectExtend,
    QsciCommand::LineUpRectExtend,
    QsciCommand::CharLeftRectExtend,
    QsciCommand::CharRightRectExtend,
    QsciCommand::HomeRectExtend,
    QsciCommand::VCHomeRectExtend,
    QsciCommand::LineEndRectExtend,
    QsciCommand::PageUpRectExtend,
    QsciCommand::PageDownRectExtend,
};

struct Colors
{
    QColor comment, delimiter, string, element, attribute, entity;
};

Colors colorsFor(const QColor &paper)
{
    if (qGray(paper.rgb()) >= 128) return {"#008000", "#0000ff", "#800080", "#800000", "#0000c0", "#d00000"};
    return {"#7fc97f", "#7aa8ff", "#d8a0e8", "#f0a080", "#9cc8ff", "#ff8a8a"};
}

} // namespace

void CodeMax::setUpKeys()
{
    QsciCommandSet *keys = standardCommands();
    const auto unbind = [keys](QsciCommand::Command command) {
        if (QsciCommand *entry = keys->find(command)) {
            entry->setKey(0);
            entry->setAlternateKey(0);
        }
    };
    for (const QsciCommand::Command command : decidedElsewhere)
        unbind(command);
    for (const QsciCommand::Command command : unwanted)
        unbind(command);
    send(SCI_SETRECTANGULARSELECTIONMODIFIER, 0);
    send(SCI_SETMOUSESELECTIONRECTANGULARSWITCH, 0);
    send(SCI_SETMULTIPLESELECTION, 0);
}

void CodeMax::setUpLooks()
{
    mLexer = new SourceLexer(this);
    setMarginType(lineNumberMargin, NumberMargin);
    for (int margin = 1; margin < 5; ++margin)
        setMarginWidth(margin, 0);
    setTabWidth(4);
    setAutoIndent(true);
    setWrapMode(WrapNone);
    setFrameShape(QFrame::NoFrame);
    send(SCI_SETSCROLLWIDTH, 1);
    send(SCI_SETSCROLLWIDTHTRACKING, 1);
    send(SCI_SETLAYOUTCACHE, SC_CACHE_PAGE);
    applyPalette();
}

void CodeMax::applyPalette()
{
    const QColor paper = palette().color(QPalette::Base);
    const QColor text = palette().color(QPalette::Text);
    const Colors colors = colorsFor(paper);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setStyleHint(QFont::Monospace);
    // The lexer would tell of each of its styles by itself; it is set anew as a whole instead.
    const bool blocked = mLexer->blockSignals(true);
    mLexer->setDefaultPaper(paper);
    mLexer->setDefaultColor(text);
    mLexer->setDefaultFont(font);
    mLexer->setPaper(paper);
    mLexer->setColor(text);
    mLexer->setFont(font);
    mLexer->setColor(colors.comment, SourceLexer::Comment);
    mLexer->setColor(colors.delimiter, SourceLexer::Delimiter);
    mLexer->setColor(colors.string, SourceLexer::String);
    mLexer->setColor(colors.element, SourceLexer::Element);
    mLexer->setColor(colors.attribute, SourceLexer::Attribute);
    mLexer->setColor(colors.entity, SourceLexer::Entity);
    mLexer->blockSignals(blocked);
    setLexer(mLexer);
    mLongLines.setUp();
    setCaretForegroundColor(text);
    setSelectionBackgroundColor(palette().color(QPalette::Highlight));
    setSelectionForegroundColor(palette().color(QPalette::HighlightedText));
    setMarginsBackgroundColor(palette().color(QPalette::Window));
    // Scintilla takes no translucent colours; the palette's placeholder is one.
    const QColor margin = palette().color(QPalette::Window), number = palette().color(QPalette::WindowText);
    setMarginsForegroundColor(QColor((2 * number.red() + margin.red()) / 3, (2 * number.green() + margin.green()) / 3,
                                     (2 * number.blue() + margin.blue()) / 3));
    setMarginsFont(font);
    mNumberDigits = 0;
    fitLineNumbers();
}

void CodeMax::fitLineNumbers()
{
    const int digits = std::max(leastNumberDigits, int(QString::number(LineCount()).size()));
    if (digits == mNumberDigits) return;
    mNumberDigits = digits;
    setMarginWidth(lineNumberMargin, QString(digits + 1, u'9'));
}

void CodeMax::changeEvent(QEvent *event)
{
    QsciScintilla::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && mLexer) applyPalette();
}
