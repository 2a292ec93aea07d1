// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Vellum5.h"

#include "control/Vellum5Parts.h"
#include "core/modMain.h"
#include "engine/changes/EditScope.h"
#include "support/FailureTrap.h"

using changes::EditScope;
using support::trap;

namespace {
constexpr char module[] = "Vellum5";
}

// What is selected, and the regions of the page. Each public member is an edit scope.

QString Vellum5::SelectedHTML()
{
    EditScope scope;
    return mParts->selection.SelectedHTML();
}

void Vellum5::setSelectedHTML(const QString &Text)
{
    EditScope scope;
    mParts->selection.setSelectedHTML(Text);
}

QString Vellum5::SelectedText()
{
    EditScope scope;
    return mParts->selection.SelectedText();
}

base::Ref<dom::Element> Vellum5::SelectedElement()
{
    EditScope scope;
    return mParts->selection.SelectedElement();
}

ranges::SelectionObject *Vellum5::SelectionObject()
{
    EditScope scope;
    return trap(module, "SelectionObject", &mParts->state, [&]() -> ranges::SelectionObject * {
        IHTMLDocument2 *const DOM = mParts->text.mDoc();
        if (!DOM || mParts->state.mCurrentEditView != EditViewEnum::hvVisualEdit) return nullptr;
        return ranges::selectionOf(*DOM);
    });
}

void Vellum5::SetSelectionToPoint(int x, int y)
{
    EditScope scope;
    mParts->selection.SetSelectionToPoint(x, y);
}

void Vellum5::SaveCurrentSelectionPoint()
{
    EditScope scope;
    trap(module, "SaveCurrentSelectionPoint", &mParts->state, [&] {
        modMain::SaveSelectionPoint(mParts->text.mDoc(), mParts->state.mSavedSelectionLength,
                                    mParts->state.mSavedSelectionCharactersFromStart);
    });
}

void Vellum5::RestoreSavedSelectionPoint()
{
    EditScope scope;
    trap(module, "RestoreSavedSelectionPoint", &mParts->state, [&] {
        modMain::RestoreSelectionPoint(mParts->text.mDoc(), mParts->state.mSavedSelectionLength,
                                       mParts->state.mSavedSelectionCharactersFromStart);
    });
}

bool Vellum5::IsWholeElementSelected()
{
    EditScope scope;
    return mParts->selection.IsWholeElementSelected();
}

// Regions. Elements that are Nothing are in none.

base::Ref<dom::Element> Vellum5::GetCurrentEditWrapperElement()
{
    EditScope scope;
    return trap<base::Ref<dom::Element>>(
        module, "GetCurrentEditWrapperElement", &mParts->state, [&](base::Ref<dom::Element> &Result) {
            Result = mParts->regions.GetEditWrapperElement(mParts->selection.SelectedElement().get());
        });
}

bool Vellum5::IsEditWrapperElement(dom::Element *e)
{
    EditScope scope;
    return modMain::IsEditWrapperElement(e);
}

bool Vellum5::IsWidgetElement(dom::Element *e)
{
    EditScope scope;
    return mParts->regions.IsWidgetElement(e);
}

bool Vellum5::IsWidgetPropertyElement(dom::Element *e)
{
    EditScope scope;
    return mParts->regions.IsWidgetPropertyElement(e);
}

bool Vellum5::ContainsWidgetElement(dom::Element *e)
{
    EditScope scope;
    return mParts->regions.ContainsWidgetElement(e);
}

bool Vellum5::IsInWidget(dom::Element *e)
{
    EditScope scope;
    return mParts->regions.IsInWidget(e);
}
