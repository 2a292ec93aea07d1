// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Selection.h"

#include "core/Host.h"
#include "core/modMain.h"
#include "core/modMainDump.h"
#include "engine/surface/View.h"
#include "platform/CodeMax.h"
#include "support/FailureTrap.h"

using support::attempt;
using support::given;
using support::trap;

namespace {

constexpr char module[] = "Vellum5";

using Element = base::Ref<IHTMLElement>;

QString withoutLineEnds(QString text)
{
    return text.remove(QLatin1String("\r\n"));
}

/// What is compared where blanks around a text and its line ends don't matter.
QString normalForm(const QString &text)
{
    return withoutLineEnds(text).trimmed();
}

bool equalForms(const QString &a, const QString &b)
{
    return normalForm(a).compare(normalForm(b), Qt::CaseInsensitive) == 0;
}

/// In a page that is read a part that can be edited is no content of its own.
bool isReplaceable(const IHTMLElement &e)
{
    return e.parentElement() && e.parentElement()->isContentEditable();
}

bool hasTag(const IHTMLElement *e, const char *tag)
{
    return e && e->tagName() == QLatin1String(tag);
}

} // namespace

Selection::Selection(Host &host, HTMLEditor &surface, CodeMax &source) : mHost(host), ed(surface), txtHTMLSource(source) {}

bool Selection::isReady() const
{
    return mHost.IsUserMode() && mHost.mInitialised();
}

// The selected element

Element Selection::SelectedElement() const
{
    SelectionRange range;
    const auto variables = given(&mHost).locals("Range", range.text, "ControlRange", range.control);
    return trap<Element>(module, "SelectedElement", variables, [&](Element &Result) {
        if ((Result = mHost.mSpecificElement())) return;
        IHTMLDocument2 *const DOM = mHost.mDoc();
        if (!DOM) return;
        const auto cells = ed.view().cellSelection().cells();
        if (!cells.empty())
            Result = cells.front();
        else if (IHTMLElement *area = ed.view().selectedArea())
            Result = area;
        else if ((range = modMain::CreateRange(DOM)))
            Result = range.text ? elementOfText(*range.text) : elementOfControl(range);
        if (!Result) Result = DOM->body();
    });
}

/// A range around a whole element says its parent, and one in an empty paragraph says what stands in it: the text that the
/// range holds beside its parent tells whether it holds the whole parent and more.
Element Selection::elementOfText(IHTMLTxtRange &range) const
{
    const Element parent = range.parentElement();
    if (!parent) return {};
    const QString text = withoutLineEnds(range.htmlText());
    const QString outer = withoutLineEnds(parent->outerHTML());
    QString beside = text;
    if (outer == QLatin1String("<P></P>"))
        beside.remove(QLatin1String("<P>&nbsp;</P>"));
    else
        beside.remove(outer);
    if (beside.isEmpty() || beside == text) return parent;
    for (Element at = parent; at && !hasTag(at.get(), "BODY"); at = at->parentElement()) {
        const bool matches = withoutLineEnds(at->innerHTML()).contains(text) || withoutLineEnds(at->outerHTML()) == text;
        if (matches) return modMain::IsEditWrapperElement(at.get()) ? parent : at;
    }
    return parent;
}

Element Selection::elementOfControl(const SelectionRange &range) const
{
    const Element first = range.control->item(0);
    if (!hasTag(first.get(), "LI") || !first->parentElement()) return first;
    return equalForms(SelectedHTML(), first->parentElement()->outerHTML()) ? Element(first->parentElement()) : first;
}

Element Selection::GetSelectedElement() const
{
    SelectionRange range;
    const auto variables = given(modMain::module).locals("Range", range.text, "ControlRange", range.control);
    return trap<Element>("modMain", "GetSelectedElement", variables, [&](Element &Result) {
        IHTMLDocument2 *const DOM = mHost.mDoc();
        if (!DOM) return;
        const auto cells = ed.view().cellSelection().cells();
        if (!cells.empty()) {
            Result = cells.front()->parentElement();
            return;
        }
        range = modMain::CreateRange(DOM);
        if (range.control) Result = SelectedElement();
        if (range.text) Result = narrowElement(*range.text);
    });
}

/// The element that the range's HTML is all of, above or behind the one that the surface answers.
Element Selection::narrowElement(IHTMLTxtRange &range) const
{
    const Element element = range.parentElement();
    const QString text = SelectedHTML().trimmed();
    const auto holdsText = [&text](IHTMLElement *parent) { return parent && equalForms(parent->outerHTML(), text); };
    IHTMLElement *const parent = element ? element->parentElement() : nullptr;
    if (!text.isEmpty() && holdsText(parent)) return parent;
    if (parent && normalForm(parent->outerHTML()).contains(normalForm(text))) {
        for (IHTMLElement *at = parent; at && !hasTag(at, "BODY"); at = at->parentElement())
            if (holdsText(at->parentElement())) return at->parentElement();
        return element;
    }
    const auto end = range.duplicate();
    end->collapse(false);
    const Element behind = end->parentElement();
    const QString outer = behind ? normalForm(behind->outerHTML()) : QString();
    const bool emptyParagraph = normalForm(text) == QLatin1String("<P>&nbsp;</P>") && outer == QLatin1String("<P></P>");
    if (behind && !text.isEmpty() && (equalForms(outer, text) || emptyParagraph)) return behind;
    return element;
}

// Its HTML and text

QString Selection::SelectedHTML() const
{
    SelectionRange range;
    const auto variables = given(&mHost).locals("Range", range.text, "ControlRange", range.control);
    return trap<QString>(module, "SelectedHTML", variables, [&](QString &Result) {
        if (!isReady()) return;
        if (mHost.EditView() == EditViewEnum::hvSourceEdit) Result = txtHTMLSource.SelText();
        if (mHost.EditView() != EditViewEnum::hvVisualEdit) return;
        range = modMain::CreateRange(mHost.mDoc());
        if (range.text) Result = htmlOfText(*range.text);
        if (!range.control) return;
        for (const Element &item : range.control->elements())
            Result += item->outerHTML();
    });
}

/// All items of a list are the list.
QString Selection::htmlOfText(IHTMLTxtRange &range) const
{
    const QString text = range.htmlText();
    const Element item = range.parentElement();
    if (!hasTag(item.get(), "LI") || !item->parentElement()) return text;
    IHTMLElement &list = *item->parentElement();
    return equalForms(list.innerHTML(), text) ? list.outerHTML() : text;
}

QString Selection::SelectedText() const
{
    SelectionRange range;
    return trap<QString>(module, "SelectedText", given(&mHost).locals("Range", range.text), [&](QString &Result) {
        if (!isReady()) return;
        if (mHost.EditView() == EditViewEnum::hvSourceEdit) Result = txtHTMLSource.SelText();
        if (mHost.EditView() != EditViewEnum::hvVisualEdit) return;
        range = modMain::CreateRange(mHost.mDoc());
        if (range.text) Result = range.text->text();
    });
}

void Selection::setSelectedHTML(const QString &Text)
{
    SelectionRange range;
    const auto variables = given(&mHost, "Text", Text).locals("Range", range.text, "ControlRange", range.control);
    trap(module, "SelectedHTML", variables, [&] {
        if (mHost.EditView() == EditViewEnum::hvSourceEdit) return txtHTMLSource.ReplaceSel(Text);
        if (mHost.EditView() != EditViewEnum::hvVisualEdit || !mHost.mDoc()) return;
        range = modMain::CreateRange(mHost.mDoc());
        if (range.control)
            replaceControl(*range.control, Text);
        else
            replaceText(Text);
        mHost.ForceSelectedElementChanged();
    });
}

void Selection::replaceText(const QString &Text)
{
    mHost.RemoveSpellMarkersFromSelection();
    const SelectionRange range = modMain::CreateRange(mHost.mDoc());
    if (!range.text) return;
    if (attempt([&] { ranges::pasteHTML(*range.text, Text); }) == 0) return;
    ranges::pasteHTML(*range.text, QString()); // what it crosses goes first
    ranges::pasteHTML(*range.text, Text);
}

void Selection::replaceControl(IHTMLControlRange &range, const QString &Text)
{
    const Element first = range.item(0);
    if (!first) return;
    for (const Element &item : range.elements())
        if (!isReplaceable(*item))
            throw base::Error(base::errors::notPossible,
                              QStringLiteral("The selection doesn't lie in a part that can be edited."));
    const auto around = ranges::createTextRange(*mHost.mDoc());
    around->moveToElementText(first.get());
    const auto items = range.elements();
    for (size_t i = 1; i < items.size(); ++i) items[i]->setOuterHTML(QString());
    replaceElement(*first, *around, Text);
}

void Selection::replaceElement(IHTMLElement &e, IHTMLTxtRange &around, const QString &Text)
{
    const auto write = [&Text](IHTMLElement &element) {
        return attempt([&] { element.setOuterHTML(Text); });
    };
    if (write(e) == 0) return;
    // A paragraph that holds nothing else goes with it; one that does would lose its text.
    const Element parent = e.parentElement();
    const bool alone = parent && parent->firstChild() == &e && parent->lastChild() == &e;
    if (alone && hasTag(parent.get(), "P") && IsWholeElementSelected() && write(*parent) == 0) return;
    around.collapse(true);
    ranges::pasteHTML(around, Text);
    e.setOuterHTML(QString());
}

bool Selection::IsWholeElementSelected() const
{
    QString text;
    Element e;
    base::Ref<IHTMLTxtRange> range;
    const auto variables = given(&mHost).locals("Text", text, "Element", e, "Range", range);
    return trap<bool>(module, "IsWholeElementSelected", variables, [&](bool &Result) {
        text = SelectedHTML();
        Result = text.isEmpty();
        if (Result) return;
        e = SelectedElement();
        if (!e) return;
        // The surface wraps what it formats into FONT; the element around it is the one that is meant.
        if (hasTag(e.get(), "FONT") && e->parentElement() && e->parentElement()->children()->length() == 1)
            e = e->parentElement();
        range = ranges::createTextRange(*mHost.mDoc());
        range->moveToElementText(e.get());
        Result = equalForms(text, range->htmlText()) || equalForms(text, e->innerHTML());
    });
}

// Where it stands

SelectionRange Selection::GetCurrentSelection() const
{
    return trap<SelectionRange>(module, "GetCurrentSelection", &mHost,
                                [&](SelectionRange &Result) { Result = modMain::CreateRange(mHost.mDoc()); });
}

void Selection::SetSelectionToPoint(int x, int y)
{
    base::Ref<IHTMLTxtRange> range;
    trap(module, "SetSelectionToPoint", given(&mHost, "x", x, "y", y).locals("Range", range), [&] {
        if (!mHost.mDoc()) return;
        range = ranges::createTextRange(*mHost.mDoc());
        if (attempt([&] { ranges::moveToPoint(*range, {x, y}); }) == 0) range->select();
    });
}

void Selection::emptySelection()
{
    ed.view().cellSelection().clear();
    if (auto *selection = ranges::selectionOf(*mHost.mDoc())) selection->empty();
}

void Selection::SelectElement(IHTMLElement *e)
{
    trap(module, "SelectElement", given(&mHost, "e", e), [&] {
        const Element held(e);
        if (!mHost.mDoc()) return;
        if (!e) return ed.takeFocus();
        if (hasTag(e, "TD") || hasTag(e, "TH")) {
            emptySelection();
            ed.view().cellSelection().select(*e);
        } else if (hasTag(e, "TR")) {
            emptySelection();
            if (dom::Element *cell = e->firstElementChild()) ed.view().cellSelection().selectRow(*cell);
        } else {
            modMain::Select(modMain::RangeForElement(e));
        }
        ed.takeFocus();
    });
}

void Selection::SelectPageElement(const QString &ElementId)
{
    trap(module, "SelectPageElement", given(&mHost, "ElementId", ElementId), [&] {
        if (!mHost.mDoc()) return;
        SelectElement(mHost.mDoc()->getElementById(ElementId));
        mHost.RefreshTools();
    });
}

QPoint Selection::GetCaretPosition() const
{
    Element start;
    return trap<QPoint>(module, "GetCaretPosition", given(&mHost).locals("Element", start), [&](QPoint &Result) {
        if (mHost.EditView() == EditViewEnum::hvSourceEdit) {
            const CodeMaxRange range = txtHTMLSource.GetSel(true);
            const QRect rectangle = txtHTMLSource.PosToRect(range.StartLineNo, range.StartColNo);
            Result = txtHTMLSource.mapToGlobal(QPoint(rectangle.left(), rectangle.top() + rectangle.height()));
            return;
        }
        start = SelectedElement();
        QPoint at(0, start ? start->offsetBox().height() : 0);
        for (const IHTMLElement *e = start.get(); e; e = e->offsetParent())
            at += e->offsetBox().topLeft() - e->scrollPosition();
        Result = ed.viewport()->mapToGlobal(at);
    });
}
