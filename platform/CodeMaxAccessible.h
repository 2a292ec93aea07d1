// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/CodeMax.h"

#include <QAccessibleWidget>

/// The source editor as assistive technology sees it, in place of QScintilla's own. That one counts the document's
/// characters from its start on every painting after the caret has moved; here offsets come from the line index, and
/// are UTF-16 units as everywhere in Qt.
class CodeMaxAccessible : public QAccessibleWidget,
                          public QAccessibleTextInterface,
                          public QAccessibleEditableTextInterface
{
public:
    explicit CodeMaxAccessible(CodeMax *editor) : QAccessibleWidget(editor, QAccessible::EditableText) {}
    static void install();

    void *interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text text) const override;

    void selection(int index, int *start, int *end) const override;
    int selectionCount() const override;
    void addSelection(int start, int end) override { select(start, end); }
    void removeSelection(int index) override;
    void setSelection(int index, int start, int end) override;
    int cursorPosition() const override;
    void setCursorPosition(int position) override { select(position, position); }
    QString text(int start, int end) const override;
    QString textBeforeOffset(int offset, QAccessible::TextBoundaryType type, int *start, int *end) const override;
    QString textAtOffset(int offset, QAccessible::TextBoundaryType type, int *start, int *end) const override;
    QString textAfterOffset(int offset, QAccessible::TextBoundaryType type, int *start, int *end) const override;
    int characterCount() const override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint &point) const override;
    void scrollToSubstring(int start, int end) override;
    QString attributes(int offset, int *start, int *end) const override;

    void deleteText(int start, int end) override { replaceText(start, end, {}); }
    void insertText(int offset, const QString &text) override { replaceText(offset, offset, text); }
    void replaceText(int start, int end, const QString &text) override;

private:
    CodeMax *editor() const { return static_cast<CodeMax *>(object()); }
    void select(int start, int end);
    QString lineFrom(int line, int *start, int *end) const;
};
