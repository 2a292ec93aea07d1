// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/CodeMaxAccessible.h"

void CodeMaxAccessible::install()
{
    static const bool installed = [] {
        QAccessible::installFactory([](const QString &className, QObject *object) -> QAccessibleInterface * {
            // Asked for each class of the object, from the lowest on; QScintilla's factory answers for one of its own.
            auto *editor = className == QLatin1String("CodeMax") ? qobject_cast<CodeMax *>(object) : nullptr;
            return editor ? new CodeMaxAccessible(editor) : nullptr;
        });
        return true;
    }();
    Q_UNUSED(installed);
}

void *CodeMaxAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface *>(this);
    if (type == QAccessible::EditableTextInterface) return static_cast<QAccessibleEditableTextInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessible::State CodeMaxAccessible::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.selectableText = true;
    state.multiLine = true;
    state.focusable = true;
    state.readOnly = editor()->ReadOnly();
    state.editable = !editor()->ReadOnly();
    return state;
}

QString CodeMaxAccessible::text(QAccessible::Text text) const
{
    return text == QAccessible::Value ? editor()->Text() : QAccessibleWidget::text(text);
}

void CodeMaxAccessible::selection(int index, int *start, int *end) const
{
    *start = *end = 0;
    if (index != 0 || selectionCount() == 0) return;
    *start = editor()->SelStart();
    *end = editor()->SelEnd();
}

int CodeMaxAccessible::selectionCount() const
{
    return editor()->CanCopy() ? 1 : 0;
}

void CodeMaxAccessible::removeSelection(int index)
{
    if (index == 0) select(cursorPosition(), cursorPosition());
}

void CodeMaxAccessible::setSelection(int index, int start, int end)
{
    if (index == 0) select(start, end);
}

int CodeMaxAccessible::cursorPosition() const
{
    const CodeMaxRange range = editor()->GetSel(false);
    return editor()->OffsetOf({range.EndLineNo, range.EndColNo});
}

void CodeMaxAccessible::select(int start, int end)
{
    const CodeMaxPosition from = editor()->PositionOf(start), to = editor()->PositionOf(end);
    editor()->SetSel({from.LineNo, from.ColNo, to.LineNo, to.ColNo}, true);
}

QString CodeMaxAccessible::text(int start, int end) const
{
    return editor()->TextBetween(start, end);
}

QString CodeMaxAccessible::lineFrom(int line, int *start, int *end) const
{
    *start = *end = -1;
    if (line < 0 || line >= editor()->LineCount()) return {};
    *start = editor()->OffsetOf({line, 0});
    *end = line + 1 < editor()->LineCount() ? editor()->OffsetOf({line + 1, 0}) : characterCount();
    return text(*start, *end);
}

// Lines are the editor's own matter. Words and sentences are told by Qt's rules, which read the whole text.

QString CodeMaxAccessible::textAtOffset(int offset, QAccessible::TextBoundaryType type, int *start, int *end) const
{
    const QString line = lineFrom(editor()->PositionOf(offset).LineNo, start, end);
    if (type == QAccessible::LineBoundary || type == QAccessible::ParagraphBoundary) return line;
    if (type == QAccessible::NoBoundary) {
        *start = 0;
        *end = characterCount();
        return editor()->Text();
    }
    return QAccessibleTextInterface::textAtOffset(offset, type, start, end);
}

QString CodeMaxAccessible::textBeforeOffset(int offset, QAccessible::TextBoundaryType type, int *start, int *end) const
{
    if (type == QAccessible::LineBoundary || type == QAccessible::ParagraphBoundary)
        return lineFrom(editor()->PositionOf(offset).LineNo - 1, start, end);
    return QAccessibleTextInterface::textBeforeOffset(offset, type, start, end);
}

QString CodeMaxAccessible::textAfterOffset(int offset, QAccessible::TextBoundaryType type, int *start, int *end) const
{
    if (type == QAccessible::LineBoundary || type == QAccessible::ParagraphBoundary)
        return lineFrom(editor()->PositionOf(offset).LineNo + 1, start, end);
    return QAccessibleTextInterface::textAfterOffset(offset, type, start, end);
}

int CodeMaxAccessible::characterCount() const
{
    return editor()->OffsetOf({editor()->LineCount(), 0});
}

QRect CodeMaxAccessible::characterRect(int offset) const
{
    const CodeMaxPosition place = editor()->PositionOf(offset);
    const QRect rect = editor()->PosToRect(place.LineNo, place.ColNo);
    return rect.isNull() ? QRect() : QRect(editor()->mapToGlobal(rect.topLeft()), rect.size());
}

int CodeMaxAccessible::offsetAtPoint(const QPoint &point) const
{
    return editor()->OffsetAt(editor()->mapFromGlobal(point));
}

void CodeMaxAccessible::scrollToSubstring(int start, int end)
{
    editor()->ScrollTo(start, end);
}

QString CodeMaxAccessible::attributes(int offset, int *start, int *end) const
{
    lineFrom(editor()->PositionOf(offset).LineNo, start, end);
    return {};
}

void CodeMaxAccessible::replaceText(int start, int end, const QString &text)
{
    select(start, end);
    editor()->ReplaceSel(text);
}
