// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Views.h"

#include "control/DocumentText.h"
#include "core/Host.h"
#include "core/Selection.h"
#include "core/SelectionPoint.h"
#include "core/modMain.h"
#include "platform/CodeMax.h"
#include "support/FailureTrap.h"
#include "widgets/Container.h"
#include "widgets/FlatStrip.h"
#include "widgets/Splitter.h"

#include <QScopedValueRollback>

using support::attempt;
using support::given;
using support::trap;

namespace {

constexpr char module[] = "Vellum5";

const QString tabKeys[] = {QStringLiteral("normal"), QStringLiteral("htmlsource"), QStringLiteral("preview")};
const QString viewCommands[] = {QStringLiteral("ViewNormal"), QStringLiteral("ViewSource"),
                                QStringLiteral("ViewPreview")};

} // namespace

Views::Views(ControlState &state, Host &host, DocumentText &text, const Selection &selection, const Children &children)
    : mState(state), mHost(host), mText(text), mSelection(selection), c(children)
{
}

EditViewEnum Views::EditView() const
{
    const QString key = c.strip.SelectedTab();
    for (int view = 0; view < 3; ++view)
        if (key == tabKeys[view]) return EditViewEnum(view);
    return EditViewEnum::hvVisualEdit;
}

void Views::setEditView(EditViewEnum View)
{
    const int N = int(View);
    trap(module, "EditView", given(&mState, "EditView", View).locals("N", N), [&] {
        if (mSelectingTab || View == mState.mCurrentEditView) return;
        if (N < 0 || N > 2)
            throw base::Error(base::errors::invalidValue, QStringLiteral("There is no view %1.").arg(N));
        if (mState.mCurrentEditView == EditViewEnum::hvVisualEdit) mText.UpdateInternalHTMLText();
        for (int view = 0; view < 3; ++view)
            mHost.setCommandChecked(viewCommands[view], view == N);
        if (c.strip.SelectedTab() != tabKeys[N]) {
            mSelectingTab = true;
            c.strip.setSelectedTab(tabKeys[N]);
            mSelectingTab = false;
        }
        mState.mCurrentEditView = View;
        UserControl_Resize();
        if (mState.mInitialised && !mState.DontPostWhenEditViewChanges) UpdateCurrentView(true);
        if (ViewChanged) ViewChanged();
    });
}

void Views::FlatStrip_Change(int NewTab)
{
    trap(module, "FlatStrip_Change", given(&mState, "NewTab", NewTab), [&] {
        if (NewTab >= 1) setEditView(EditViewEnum(NewTab - 1));
    });
}

void Views::UpdateCurrentView(bool PostContent)
{
    trap(module, "UpdateCurrentView", given(&mState, "PostContent", PostContent),
         [&] { UpdateView(mState.mCurrentEditView, PostContent); });
}

void Views::UpdateView(EditViewEnum View, bool PostContent)
{
    trap(module, "UpdateView", given(&mState, "View", View, "PostContent", PostContent), [&] {
        if (View == EditViewEnum::hvSourceEdit)
            showSource();
        else
            showSurface(View, PostContent);
        mHost.RefreshTools();
    });
}

void Views::showSurface(EditViewEnum View, bool PostContent)
{
    if (c.ed.isHidden()) c.ed.show();
    const auto wished = View == EditViewEnum::hvPreview ? dom::EditMode::Browse : dom::EditMode(mState.mEditMode);
    const bool ModeChanged = c.ed.editMode() != wished;
    bool BaseChanged = false;
    QString text;
    const support::Locals locals("ModeChanged", ModeChanged, "BaseChanged", BaseChanged, "Text", text);
    if (ModeChanged) c.ed.setEditMode(wished);
    if (PostContent) {
        BaseChanged = c.ed.baseUrl() != mState.mBaseURL;
        if (BaseChanged || mState.mHTMLSourceChanged || ModeChanged || mState.mBodyMode) {
            if (BaseChanged) c.ed.setBaseUrl(mState.mBaseURL);
            text = mText.GetInternalHTMLText();
            mText.SetedDocumentHTML(text.isEmpty() ? QStringLiteral(" ") : text);
            mState.mHTMLSourceChanged = false;
        }
    }
    if (c.txtHTMLSource.isHidden()) return;
    // Who types goes on typing in the view that takes the editor's place.
    const bool hadFocus = c.txtHTMLSource.hasFocus();
    c.txtHTMLSource.hide();
    if (hadFocus) c.ed.takeFocus();
}

void Views::showSource()
{
    if (mHost.mDoc()) attempt([this] { carrySelectionOver(); });
    if (c.txtHTMLSource.isHidden()) c.txtHTMLSource.show();
    c.ed.hide();
    c.txtHTMLSource.setFocus();
    c.txtHTMLSource.ScrollTo(c.txtHTMLSource.SelStart(), c.txtHTMLSource.SelEnd());
    mState.mHTMLSourceChanged = false;
}

// The selection's way into the source: the element that is meant is sought by its text, then the letters behind the
// caret within it.

namespace {
constexpr int sought = 10; // letters that tell a place from others well enough
}

bool Views::findInSource(const QString &text)
{
    QScopedValueRollback synching(mState.mSynchingSource, true);
    mState.mCmdFail = false;
    c.txtHTMLSource.setFindText(text);
    c.txtHTMLSource.ExecuteCmd(codemax::findNext);
    return !mState.mCmdFail;
}

void Views::collapseInSource()
{
    CodeMaxRange range = c.txtHTMLSource.GetSel(true);
    range.EndLineNo = range.StartLineNo;
    range.EndColNo = range.StartColNo;
    c.txtHTMLSource.SetSel(range, true);
}

void Views::carrySelectionOver()
{
    const base::Ref<IHTMLElement> E = mSelection.SelectedElement();
    if (c.txtHTMLSource.LineCount() == 0 || !E) return;
    const base::Ref<IHTMLTxtRange> R = modMain::CreateRange(mHost.mDoc()).text;
    const bool isBody = E->tagName() == QLatin1String("BODY");
    if (isBody && !R) return;
    c.txtHTMLSource.SetSel(CodeMaxRange(), false);
    for (const int option : {codemax::matchCaseOff, codemax::regExpOff, codemax::wholeWordOff})
        c.txtHTMLSource.ExecuteCmd(option);
    if (isBody) {
        R->moveEnd(QStringLiteral("character"), sought);
        findInSource(R->htmlText().trimmed());
        return collapseInSource();
    }
    if (!findInSource(E->outerHTML())) {
        const QString text = E->outerText();
        if (!text.trimmed().isEmpty()) findInSource(text);
    }
    // A link is found well enough by its own text.
    if (R && E->tagName().compare(QLatin1String("a"), Qt::CaseInsensitive) != 0) {
        R->moveEnd(QStringLiteral("character"), sought);
        const QString text = R->text().left(sought);
        // Tags stand between the blocks of the source.
        if (!findInSource(text) && text.contains(u'\r')) findInSource(text.left(text.indexOf(u'\r')));
    }
    collapseInSource();
}

void Views::txtHTMLSource_CmdFailure(int Command, int Code)
{
    trap(module, "txtHTMLSource_CmdFailure", given(&mState, "Command", Command, "Code", Code), [&] {
        if (Command != codemax::findNext || !mState.mSynchingSource) return;
        mState.mCmdFail = true;
        c.txtHTMLSource.ClearErrorState();
    });
}

// Layout. All lengths in pixels; a child that fails leaves the others to be placed.

void Views::UserControl_Resize()
{
    if (!mHost.IsUserMode()) return;
    attempt([&] {
        const int width = c.control.width(), height = c.control.height();
        const int Margin = mState.mThemed && mState.mBorderStyle == 1 ? 1 : 0;
        const int TagBarHeight = 0; // the tag bar's place
        int StripHeight = 0;
        if (mState.mShowFlatStrip) {
            StripHeight = c.strip.height();
            c.strip.setGeometry(Margin, height - StripHeight - Margin, width - 2 * Margin, StripHeight);
        }
        const QRect editors(Margin, Margin + TagBarHeight, width - 2 * Margin,
                            height - 2 * Margin - StripHeight - TagBarHeight);
        if (c.splitMain.isHidden()) c.conEditors.setGeometry(editors);
        c.splitMain.setGeometry(editors);
    });
}

void Views::conEditors_Resize(int Width, int Height)
{
    // The overhang of two and the two lost in height hide the surface's own edges behind the container.
    attempt([&] {
        const QRect surface(0, 0, Width + 2, Height - 2);
        if (mState.mShowPageMap && c.ed.parentWidget() != &c.conEditors)
            c.splitPageMap.setGeometry(surface);
        else
            c.ed.setGeometry(surface);
        c.txtHTMLSource.setGeometry(0, 0, Width, Height - 2);
    });
}

void Views::setShowFlatStrip(bool Show)
{
    trap(module, "ShowFlatStrip", given(&mState, "ShowFlatStrip", Show), [&] {
        mState.mShowFlatStrip = Show;
        c.strip.setVisible(Show);
        UserControl_Resize();
        mHost.tellPropertyChanged("ShowFlatStrip");
    });
}

void Views::setShowPreviewButton(bool Show)
{
    trap(module, "ShowPreviewButton", given(&mState, "ShowPreviewButton", Show), [&] {
        if (mState.mShowPreviewButton != Show) {
            mState.mShowPreviewButton = Show;
            c.strip.setTabVisible(tabKeys[2], Show);
        }
        mHost.tellPropertyChanged("ShowPreviewButton");
    });
}

void Views::setShowPageMap(bool Show)
{
    trap(module, "ShowPageMap", given(&mState, "ShowPageMap", Show), [&] {
        if (mState.mShowPageMap == Show) return;
        mState.mShowPageMap = Show;
        mHost.setCommandChecked(QStringLiteral("ViewPageMap"), Show);
        mHost.tellPropertyChanged("ShowPageMap");
    });
}

void Views::setShowTagBar(bool Show)
{
    trap(module, "ShowTagBar", given(&mState, "ShowTagBar", Show), [&] {
        if (mState.mShowTagBar == Show) return;
        mState.mShowTagBar = Show;
        mHost.setCommandChecked(QStringLiteral("ViewPageElementBar"), Show);
        mHost.tellPropertyChanged("ShowTagBar");
    });
}

void Views::setShowPropertySheet(bool Show)
{
    const QString command = QStringLiteral("ViewShowAttributes");
    bool open = false;
    const auto variables = given(&mState, "ShowPropertySheet", Show).locals("Command", command, "Open", open);
    trap(module, "ShowPropertySheet", variables, [&] {
        mHost.setCommandVisible(command, Show);
        open =
            Show && modMain::GetAppValue(QStringLiteral("HTMLAttributesClosed"), QStringLiteral("True")).toString() ==
                        QLatin1String("False");
        mHost.setCommandChecked(command, open);
        mState.mShowPropertySheet = Show;
        mHost.tellPropertyChanged("ShowPropertySheet");
    });
}

void Views::setShowDetails(bool Show)
{
    trap(module, "ShowDetails", given(&mState, "ShowDetails", Show), [&] {
        mState.mShowDetails = Show;
        c.ed.setShowDetails(Show);
        mHost.tellPropertyChanged("ShowDetails");
    });
}

bool Views::IsPropertySheetVisible() const
{
    return false; // there is no sheet to show yet, whatever the command's state
}
