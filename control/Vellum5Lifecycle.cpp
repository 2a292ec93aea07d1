// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Vellum5.h"

#include "control/Published.h"
#include "control/SpellImage.h"
#include "control/Theme.h"
#include "control/Vellum5Parts.h"
#include "core/modMain.h"
#include "engine/changes/EditScope.h"
#include "platform/FileHelper.h"
#include "platform/HotKeys.h"
#include "platform/HttpHelper.h"
#include "support/FailureTrap.h"
#include "support/InstanceCounts.h"
#include "support/WindowPositionStore.h"

#include <QCoreApplication>

using changes::EditScope;
using support::given;
using support::trap;

/// The library's pictures; a program that links the library's archive would leave them out.
static void initResources()
{
    Q_INIT_RESOURCE(vellumkit);
}

// How a control starts, keeps its properties, shows, and ends.

namespace {

constexpr char module[] = "Vellum5";
constexpr uint white = 0xFFFFFF;

QString setting(const char *name)
{
    return modMain::GetAppValue(QLatin1String(name), QString()).toString();
}

} // namespace

Vellum5::Parts::Parts(Vellum5 &control)
    : host(control), splitMain(new Splitter(Qt::Horizontal, &control)), conEditors(new Container(&control)),
      splitPageMap(new Splitter(Qt::Horizontal, conEditors)), ed(new HTMLEditor(conEditors)),
      txtHTMLSource(new CodeMax(conEditors)), strip(new FlatStrip(&control)), regions(host),
      selection(host, *ed, *txtHTMLSource), text(state, host, *ed, *txtHTMLSource),
      views(state, host, text, selection, {control, *ed, *txtHTMLSource, *strip, *splitMain, *splitPageMap, *conEditors}),
      events(state, host, *ed, *txtHTMLSource, regions, selection), changes(state, host, *ed, *txtHTMLSource, events),
      commands(host, state.mSpecificElement), journal(state, host, *ed, *txtHTMLSource)
{
    // Hosts find the children by these names.
    const std::pair<QObject *, const char *> named[] = {{ed, "ed"},
                                                        {txtHTMLSource, "txtHTMLSource"},
                                                        {strip, "FlatStrip"},
                                                        {splitMain, "splitMain"},
                                                        {splitPageMap, "splitPageMap"},
                                                        {conEditors, "conEditors"}};
    for (const auto &[child, name] : named) child->setObjectName(QLatin1String(name));
    timSpellCheck.setInterval(750);
    text.journal = &journal;
}

Vellum5::Vellum5(QWidget *parent, HostContainer *Container)
    : QWidget(parent), mParts(std::make_unique<Parts>(*this))
{
    EditScope scope;
    UserControl_Initialize(Container);
    UserControl_InitProperties();
}

Vellum5::Vellum5(PropertyBag &Bag, QWidget *parent, HostContainer *Container)
    : QWidget(parent), mParts(std::make_unique<Parts>(*this))
{
    EditScope scope;
    UserControl_Initialize(Container);
    UserControl_ReadProperties(Bag);
}

Vellum5::~Vellum5()
{
    UserControl_Terminate();
}

void Vellum5::UserControl_Initialize(HostContainer *Container)
{
    initResources();
    modMain::Main();
    publishControl();
    trap(module, "Usercontrol_Initialize", given(&mParts->state, "Container", Container), [&] {
        mParts->host.container = Container;
        mParts->state.mCommandManager = std::make_shared<VirtualCommandManager>();
        mParts->state.mOutputDebugStrings = mParts->debug.isOn();
        mParts->splitMain->hide();
        mParts->splitPageMap->setPositionMode(Splitter::PositionMode::SecondPanePixels);
        mParts->splitPageMap->hide();
        mParts->strip->addTab(QStringLiteral("normal"), tr("Normal"));
        mParts->strip->addTab(QStringLiteral("htmlsource"), tr("HTML"));
        mParts->strip->addTab(QStringLiteral("preview"), tr("Preview"));
        mParts->strip->setSelectedTab(QStringLiteral("normal"));
        mParts->txtHTMLSource->hide();
        setFocusProxy(nullptr);
        wireChildren();
    });
}

void Vellum5::wireChildren()
{
    Parts &p = *mParts;
    p.text.UpdateCurrentView = [&p](bool PostContent) { p.views.UpdateCurrentView(PostContent); };
    p.text.CreateNewChangeManager = [&p] { p.changes.CreateNewChangeManager(); };
    p.text.KillChangeManager = [&p] { p.changes.KillChangeManager(); };
    p.views.ViewChanged = [&p] { p.journal.stateChanged(); };
    p.journal.showView = [&p](int view) {
        const bool dontPost = std::exchange(p.state.DontPostWhenEditViewChanges, true);
        p.views.setEditView(EditViewEnum(view));
        p.state.DontPostWhenEditViewChanges = dontPost;
        p.views.UpdateCurrentView(false);
    };
    p.journal.loadSurface = [&p](const QString &text) {
        p.state.mLoadingEd = true;
        p.text.ShutDownBeforeReload();
        p.state.mRespondToDocumentComplete = true;
        p.ed->setDocumentText(text);
    };
    p.events.ShutDownBeforeReload = [&p] { p.text.ShutDownBeforeReload(); };

    // The surface knows no files; without a reader every page that it navigates to is empty.
    p.ed->readText = [](const QString &url) {
        if (url.startsWith(QLatin1String("http:"), Qt::CaseInsensitive) ||
            url.startsWith(QLatin1String("https:"), Qt::CaseInsensitive))
            return platform::HttpHelper::fetchText(url);
        return platform::FileHelper::readText(url).text;
    };
    p.ed->roleOf = &EditableRegions::RoleOf;
    p.ed->beforePrint = [&p](dom::Document &copy) { p.text.hideMisspellings(copy); };
    connect(p.ed, &HTMLEditor::documentLoaded, this, [&p](const QString &text) { p.journal.surfaceLoaded(text); });
    connect(p.ed, &HTMLEditor::documentComplete, this, [&p](const QString &url) {
        EditScope scope;
        p.journal.loadCompletes();
        p.text.ed_DocumentComplete(url);
        p.journal.loadCompleted();
    });
    connect(p.ed, &HTMLEditor::beforeNavigate, this, [&p](const surface::Navigation &navigation, bool &Cancel) {
        p.events.ed_BeforeNavigate(navigation, Cancel);
    });
    connect(p.ed, &HTMLEditor::navigateComplete, this, [&p] { p.events.ed_NavigateComplete(); });
    connect(p.ed, &HTMLEditor::elementEvent, this, [&p](int id, dom::EventObject *event, bool &CancelDefault) {
        p.events.ed_ElementEvent(id, event, CancelDefault);
    });
    connect(p.ed, &HTMLEditor::commandStateChange, this,
            [&p](int command, bool enable) { p.events.ed_CommandStateChange(command, enable ? -1 : 0); });
    connect(p.ed, &HTMLEditor::cellSelectionChanged, this, [this] {
        EditScope scope;
        mParts->events.ed_CellSelectionChanged();
    });
    connect(p.ed, &HTMLEditor::areaCreated, this, [&p](IHTMLElement *Area) {
        EditScope scope;
        p.events.ed_AreaCreated(Area);
    });
    connect(p.ed, &HTMLEditor::undoRequested, this, [this] {
        if (!Locked()) Undo();
    });
    connect(p.ed, &HTMLEditor::redoRequested, this, [this] {
        if (!Locked()) Redo();
    });
    connect(p.txtHTMLSource, &CodeMax::Change, this, [&p] {
        EditScope scope;
        p.events.txtHTMLSource_Change();
    });
    connect(p.txtHTMLSource, &CodeMax::SelChange, this, [&p] { p.events.txtHTMLSource_SelChange(); });
    connect(p.txtHTMLSource, &CodeMax::CmdFailure, this,
            [&p](int Command, int Code) { p.views.txtHTMLSource_CmdFailure(Command, Code); });
    connect(p.txtHTMLSource, &CodeMax::ShowProps, this, [&p] { p.events.txtHTMLSource_ShowProps(); });
    connect(p.strip, &FlatStrip::Change, this, [&p](int NewTab) {
        EditScope scope;
        p.views.FlatStrip_Change(NewTab);
    });
    connect(p.conEditors, &Container::Resize, this,
            [&p](int Width, int Height) { p.views.conEditors_Resize(Width, Height); });

    p.commands.add(QStringLiteral("EditUndo"), [&p] { p.changes.Undo(); });
    p.commands.add(QStringLiteral("EditRedo"), [&p] { p.changes.Redo(); });
    p.commands.add(QStringLiteral("ViewNormal"), [&p] { p.views.setEditView(EditViewEnum::hvVisualEdit); });
    p.commands.add(QStringLiteral("ViewSource"), [&p] { p.views.setEditView(EditViewEnum::hvSourceEdit); });
    p.commands.add(QStringLiteral("ViewPreview"), [&p] { p.views.setEditView(EditViewEnum::hvPreview); });
    p.commands.add(QStringLiteral("PrintPreview"), [this] { DoPrint(true); });
    p.commands.add(QStringLiteral("Print"), [this] { DoPrint(false); });
}

void Vellum5::Initialise()
{
    trap(module, "Initialise", &mParts->state, [&] {
        ControlState &state = mParts->state;
        if (!IsUserMode() || state.mInitialised) return;
        state.mTheme = std::make_unique<Theme>(*this);
        state.mThemed = state.mTheme->isActive();
        modMain::mAutoFormatHTML = true;
        state.mLoadingEd = true;
        if (modMain::mAppName.isEmpty()) modMain::mAppName = QStringLiteral("BrimVellumPad");
        state.mDynamicSpellCheck =
            support::SettingsStore::instance().read(support::SettingsRoot::CurrentUser,
                                                    QStringLiteral("Software\\Brimfield\\VellumPad"),
                                                    QStringLiteral("DynamicSpell")) == QLatin1String("True");
        mParts->host.setCommandChecked(QStringLiteral("ToolsAutoSpell"), state.mDynamicSpellCheck);
        state.mCurrentEditView = noView;
        ++modMain::mInstanceCount;
        mParts->isCounted = true;
        state.mStylesheets = std::make_shared<platform::Collection>();
        mParts->ed->setShowDetails(state.mShowDetails);
        state.mSpellImagePath = spellImagePath(support::moduleFileName(), QCoreApplication::applicationDirPath());
        setShowPropertySheet(state.mShowPropertySheet);
        HotKeys::global().add(137, QKeySequence(Qt::CTRL | Qt::Key_A));
        HotKeys::global().removeAll(178);
        HotKeys::global().removeAll(169);
        for (const int option : {7, 8, 1})
            mParts->ed->setNumberedOption(option, true);
        state.mHTMLSourceChanged = true;
        mParts->views.setEditView(EditViewEnum::hvVisualEdit);
        support::WindowPositionStore::instance().setRootKey(QStringLiteral("Software\\Brimfield\\Vellum"));
        state.mInitialised = true;
    });
}

void Vellum5::UserControl_InitProperties()
{
    trap(module, "UserControl_InitProperties", &mParts->state, [&] {
        Initialise();
        setBackColor(white);
        setBorderStyle(1);
        mParts->state.mShowFlatStrip = true;
        mParts->state.mBodyMode = false;
        mParts->state.mShowDetails = false;
        mParts->state.mShowPropertySheet = false;
        mParts->state.mShowPreviewButton = true;
        mParts->state.mEditMode = 1;
        mParts->ed->setEditMode(dom::EditMode::Edit);
        mParts->views.UserControl_Resize();
    });
}

void Vellum5::UserControl_ReadProperties(PropertyBag &Bag)
{
    const PropertyBag *const bag = &Bag;
    int mode = 0;
    const auto variables = given(&mParts->state, "Bag", bag).locals("Mode", mode);
    trap(module, "UserControl_ReadProperties", variables, [&] {
        const auto flag = [&Bag](const char *name, bool byDefault) {
            return PropertyBag::toBoolean(Bag.ReadProperty(QLatin1String(name), byDefault));
        };
        ControlState &state = mParts->state;
        Initialise();
        if (IsUserMode()) mParts->strip->show();
        state.mBaseURL = Bag.ReadProperty(QStringLiteral("BaseURL"), QString()).toString();
        state.mShowFlatStrip = flag("ShowFlatStrip", true);
        state.mBodyMode = flag("BodyMode", false);
        setShowDetails(flag("ShowDetails", false));
        setShowPropertySheet(flag("ShowPropertySheet", false));
        state.mEnableLinkClicks = flag("EnableLinkClicks", false);
        state.mShowPreviewButton = flag("ShowPreviewButton", true);
        // COMPAT: the colour is kept in the bag and never read; every load shows white.
        setBackColor(white);
        setBorderStyle(PropertyBag::toLong(Bag.ReadProperty(QStringLiteral("BorderStyle"), 1)));
        mParts->ed->setAutoSelectEditableSpans(flag("AutoSelectEditableSpans", false));
        mode = PropertyBag::toLong(Bag.ReadProperty(QStringLiteral("EditMode"), 1));
        state.mEditMode = mode < 0 || mode > 2 ? 1 : mode; // what isn't a mode is none that was asked for
        mParts->ed->setEditMode(dom::EditMode(state.mEditMode));
        mParts->strip->setVisible(state.mShowFlatStrip);
        mParts->strip->setTabVisible(QStringLiteral("preview"), state.mShowPreviewButton);
        state.mShowPageMap = flag("ShowPageMap", false);
        state.mShowTagBar = flag("ShowTagBar", false);
        mParts->views.UserControl_Resize();
    });
}

void Vellum5::WriteProperties(PropertyBag &Bag) const
{
    const PropertyBag *const bag = &Bag;
    trap(module, "UserControl_WriteProperties", given(&mParts->state, "Bag", bag), [&] {
        const ControlState &state = mParts->state;
        const auto write = [&Bag](const char *name, const QVariant &value, const QVariant &byDefault) {
            Bag.WriteProperty(QLatin1String(name), value, byDefault);
        };
        write("BaseURL", state.mBaseURL, QString());
        write("ShowFlatStrip", state.mShowFlatStrip, true);
        // COMPAT: as the boolean's text; whoever reads it converts.
        write("BodyMode", modMain::booleanText(state.mBodyMode), modMain::booleanText(false));
        write("ShowDetails", state.mShowDetails, false);
        write("ShowPropertySheet", state.mShowPropertySheet, false);
        write("EditMode", state.mEditMode, 1);
        write("EnableLinkClicks", state.mEnableLinkClicks, false);
        write("ShowPreviewButton", state.mShowPreviewButton, true);
        write("BorderStyle", state.mBorderStyle, 1);
        write("BackColor", state.mBackColor, white);
        write("ShowPageMap", state.mShowPageMap, false);
        write("ShowTagBar", state.mShowTagBar, false);
        write("AutoSelectEditableSpans", mParts->ed->autoSelectEditableSpans(), false);
    });
}

void Vellum5::UserControl_Show()
{
    trap(module, "UserControl_Show", &mParts->state, [&] {
        if (!IsUserMode()) return;
        mParts->state.mVisible = true;
        mParts->conEditors->show();
        mParts->ed->setShowDetails(setting("ShowDetails") == QLatin1String("True"));
        mParts->host.setCommandChecked(QStringLiteral("ViewShowAll"), mParts->ed->showDetails());
        mParts->ed->setShowBorders(setting("ShowBorders") != QLatin1String("False"));
        mParts->host.setCommandChecked(QStringLiteral("ViewShowBorders"), mParts->ed->showBorders());
    });
}

void Vellum5::UserControl_Hide()
{
    trap(module, "UserControl_Hide", &mParts->state, [&] { mParts->state.mVisible = false; });
}

void Vellum5::Terminate()
{
    EditScope scope;
    trap(module, "Terminate", &mParts->state, [&] {
        ControlState &state = mParts->state;
        if (state.mTerminating || state.mTerminated) return;
        state.mTerminating = true;
        mParts->journal.close();
        mParts->text.ResetNavSound();
        state.mTheme.reset();
        mParts->events.dropTimers();
        mParts->timSpellCheck.setEnabled(false);
        state.mStylesheets = std::make_shared<platform::Collection>();
        state.mSpellChoiceElement = nullptr;
        if (state.mChangeManager) state.mChangeManager->Terminate();
        state.mEventProxy.reset();
        state.mCommandManager.reset();
        state.mSpecificElement = nullptr;
        state.mTerminating = false;
        state.mTerminated = true;
        OutputDebugString(QStringLiteral("Terminate completed"));
    });
}

void Vellum5::UserControl_Terminate()
{
    trap(module, "Usercontrol_Terminate", &mParts->state, [&] {
        if (!mParts->state.mTerminated) {
            OutputDebugString(
                QStringLiteral("**Warning** Terminate has not been explicitly called on this Vellum instance "
                               "- calling from UserControl_Terminate"));
            Terminate();
        }
        if (mParts->isCounted) --modMain::mInstanceCount;
        OutputDebugString(QStringLiteral("UserControl_Terminate completed"));
    });
    // Children die before the concerns that they would call.
    for (QObject *child : {static_cast<QObject *>(mParts->ed), static_cast<QObject *>(mParts->txtHTMLSource),
                           static_cast<QObject *>(mParts->strip), static_cast<QObject *>(mParts->conEditors)})
        child->disconnect(this);
}

bool Vellum5::IsUserMode() const
{
    return mParts->host.IsUserMode();
}

void Vellum5::OutputDebugString(const QString &Text) const
{
    if (mParts->state.mOutputDebugStrings) mParts->debug.OutputDebugString(Text);
}

void Vellum5::tellHost(const char *Name)
{
    const QString name = QLatin1String(Name);
    if (mParts->host.container) mParts->host.container->PropertyChanged(name);
    Q_EMIT PropertyChanged(name);
}

// The widget

void Vellum5::resizeEvent(QResizeEvent *)
{
    mParts->views.UserControl_Resize();
}

void Vellum5::showEvent(QShowEvent *)
{
    EditScope scope;
    UserControl_Show();
}

void Vellum5::hideEvent(QHideEvent *)
{
    EditScope scope;
    UserControl_Hide();
}

void Vellum5::paintEvent(QPaintEvent *)
{
    trap(module, "UserControl_Paint", &mParts->state, [&] {
        const ControlState &state = mParts->state;
        if (state.mThemed && state.mBorderStyle == 1 && state.mTheme) state.mTheme->paintEditBorder();
    });
}

void Vellum5::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    // Called as a widget. A parent that is disabled takes its children along, but that is no word of theirs.
    const bool enabled = !testAttribute(Qt::WA_ForceDisabled);
    if (event->type() == QEvent::EnabledChange && !mLettingEnabled && enabled != mParts->state.mEnabled) {
        EditScope scope;
        letEnabled(enabled);
    }
    if (event->type() == QEvent::StyleChange || event->type() == QEvent::LayoutDirectionChange)
        mParts->views.UserControl_Resize();
}

// The host's window to the control

bool ControlHost::IsUserMode() const
{
    // Asked from the widget's own events too, which nobody else could catch a failure for.
    return support::trap(module, "IsUserMode", &mControl.state(), [&] { return !container || container->UserMode(); });
}

bool ControlHost::ExtenderVisible(bool ifUnknown) const
{
    bool visible = ifUnknown;
    support::attempt([&] {
        // Before it is first shown the control counts as visible: its form is being loaded.
        const bool hidden = mControl.isHidden() && mControl.testAttribute(Qt::WA_WState_ExplicitShowHide);
        visible = !hidden && (!container || container->Visible());
    });
    return visible;
}

IHTMLDocument2 *ControlHost::mDoc() const
{
    return mControl.parts().text.mDoc();
}

void ControlHost::setCommandChecked(const QString &Name, bool Checked)
{
    if (mControl.state().mCommandManager) mControl.state().mCommandManager->setCommandChecked(Name, Checked);
}

void ControlHost::setCommandVisible(const QString &Name, bool Visible)
{
    if (mControl.state().mCommandManager) mControl.state().mCommandManager->setCommandVisible(Name, Visible);
}

bool ControlHost::UndoEnabled() const
{
    return mControl.parts().changes.UndoEnabled();
}

bool ControlHost::RedoEnabled() const
{
    return mControl.parts().changes.RedoEnabled();
}

void ControlHost::ForceSelectedElementChanged()
{
    mControl.parts().events.ForceSelectedElementChanged();
}

void ControlHost::RefreshTools()
{
    support::trap("Vellum5", "RefreshTools", &mControl.state(), [&] {
        ControlState &state = mControl.state();
        if (state.MouseIsDown || state.mTerminated || state.mTerminating || !state.mCommandManager) return;
        if (!ExtenderVisible(true)) return;
        state.mCommandManager->setCommandEnabled(QStringLiteral("EditUndo"), UndoEnabled() && !state.mLocked);
        state.mCommandManager->setCommandEnabled(QStringLiteral("EditRedo"), RedoEnabled() && !state.mLocked);
        Q_EMIT mControl.ToolsRefreshed();
        // Who was told may have ended the control, and its proxy with it.
        if (state.mEventProxy) Q_EMIT state.mEventProxy->ToolsRefreshed();
    });
}
