// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/SelectionPoint.h"

#include <QPoint>
#include <QString>

class CodeMax;
class Host;

/// What is selected, as a user sees it. The surface's own answer often isn't that: a text range around a whole element
/// reports the parent, and an empty paragraph reports text. What counts as the selected element is settled here, and how
/// the selection is read, replaced, saved and put back.
///
/// Where there is no document, or before the control has been set up, the answers are empty. Nothing here raises; a
/// failure is reported.
class Selection
{
public:
    Selection(Host &host, HTMLEditor &ed, CodeMax &txtHTMLSource);

    /// A forced element; else the first selected cell; the selected area; the element that a text range holds; the first
    /// selected object, or its list; else BODY. Nothing without a document.
    base::Ref<IHTMLElement> SelectedElement() const;
    /// The older and stricter answer, for commands that need a narrower element. Nothing where no range is.
    base::Ref<IHTMLElement> GetSelectedElement() const;

    /// HTML of the selection; in the source view the editor's selected text, in the preview "".
    QString SelectedHTML() const;
    /// Replaces the selection. Does nothing in the preview.
    void setSelectedHTML(const QString &Text);
    QString SelectedText() const;
    /// Whether the selection is all of an element, or nothing is selected.
    bool IsWholeElementSelected() const;

    /// Puts the caret to a client point; where no text can stand it stays.
    void SetSelectionToPoint(int x, int y);
    /// The selection as a range; empty where there is none.
    SelectionRange GetCurrentSelection() const;
    void SelectElement(IHTMLElement *e);
    /// The element that a strip shows, found by its id.
    void SelectPageElement(const QString &ElementId);
    /// The point under the selected element, or under the caret of the source editor, on the screen.
    QPoint GetCaretPosition() const;

private:
    base::Ref<IHTMLElement> elementOfText(IHTMLTxtRange &range) const;
    base::Ref<IHTMLElement> narrowElement(IHTMLTxtRange &range) const;
    base::Ref<IHTMLElement> elementOfControl(const SelectionRange &range) const;
    QString htmlOfText(IHTMLTxtRange &range) const;
    void replaceText(const QString &Text);
    void replaceControl(IHTMLControlRange &range, const QString &Text);
    void replaceElement(IHTMLElement &e, IHTMLTxtRange &around, const QString &Text);
    void emptySelection();
    bool isReady() const;

    Host &mHost;
    HTMLEditor &ed;
    CodeMax &txtHTMLSource;
};
