// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Vellum5.h"

#include "control/Vellum5Parts.h"
#include "core/modMain.h"
#include "engine/changes/EditScope.h"
#include "platform/OleColor.h"
#include "support/FailureTrap.h"

#include <QCoreApplication>
#include <QEvent>

using changes::EditScope;
using support::given;
using support::trap;

// The members of the shell itself: its name, state and looks, and the objects that it hands out.

namespace {
constexpr char module[] = "Vellum5";
}

QString Vellum5::AppName() const
{
    return trap(module, "AppName", &mParts->state, [] { return modMain::mAppName; });
}

void Vellum5::setAppName(const QString &AppName)
{
    EditScope scope;
    trap(module, "AppName", given(&mParts->state, "AppName", AppName), [&] {
        modMain::mAppName = AppName;
        const auto setting = [](const char *name, const char *byDefault) {
            return modMain::GetAppValue(QLatin1String(name), QLatin1String(byDefault)).toString();
        };
        mParts->state.mDynamicSpellCheck = PropertyBag::toBoolean(setting("DynamicSpell", "0"));
        modMain::mAutoFormatHTML = setting("AutoFormatHTML", "True") != QLatin1String("False");
        mParts->host.setCommandChecked(QStringLiteral("ToolsAutoSpell"), mParts->state.mDynamicSpellCheck);
        mParts->splitPageMap->setPosition(PropertyBag::toLong(setting("PageMapWidth", "42")));
        setShowPageMap(PropertyBag::toBoolean(setting("ShowPageMap", "False")));
        setShowTagBar(PropertyBag::toBoolean(setting("ShowTagBar", "False")));
    });
}

bool Vellum5::Enabled() const
{
    return trap(module, "Enabled", &mParts->state, [&] { return mParts->state.mEnabled; });
}

void Vellum5::setEnabled(bool Enabled)
{
    EditScope scope;
    letEnabled(Enabled);
    if (Enabled == !testAttribute(Qt::WA_ForceDisabled)) return;
    mLettingEnabled = true;
    if (Enabled) {
        QWidget::setEnabled(true);
    } else {
        // What the control shows stays at hand: the tabs work, and the surface and the source editor have been told
        // what they may do. So the widget itself is disabled, as its callers can see, and its children aren't.
        setAttribute(Qt::WA_ForceDisabled);
        setAttribute(Qt::WA_Disabled);
        QEvent changed(QEvent::EnabledChange);
        QCoreApplication::sendEvent(this, &changed);
    }
    mLettingEnabled = false;
}

void Vellum5::letEnabled(bool Enabled)
{
    trap(module, "Enabled", given(&mParts->state, "Enabled", Enabled), [&] {
        mParts->state.mEnabled = Enabled;
        mParts->ed->setEditMode(Enabled ? dom::EditMode(mParts->state.mEditMode) : dom::EditMode::Disabled);
        mParts->host.RefreshTools();
        mParts->txtHTMLSource->setEnabled(Enabled);
    });
}

uint Vellum5::BackColor() const
{
    return trap(module, "BackColor", &mParts->state, [&] { return mParts->state.mBackColor; });
}

void Vellum5::setBackColor(uint BackColor)
{
    EditScope scope;
    trap(module, "BackColor", given(&mParts->state, "BackColor", BackColor), [&] {
        mParts->state.mBackColor = BackColor;
        mParts->strip->setBackColor(platform::oleColor(BackColor, palette()));
        tellHost("BackColor");
    });
}

int Vellum5::BorderStyle() const
{
    return trap(module, "BorderStyle", &mParts->state, [&] { return mParts->state.mBorderStyle; });
}

void Vellum5::setBorderStyle(int BorderStyle)
{
    EditScope scope;
    trap(module, "BorderStyle", given(&mParts->state, "BorderStyle", BorderStyle), [&] {
        mParts->state.mBorderStyle = BorderStyle;
        mParts->views.UserControl_Resize();
        update();
        tellHost("BorderStyle");
    });
}

int Vellum5::ContextToolbarStyle() const
{
    return trap(module, "ContextToolbarStyle", &mParts->state, [&] { return mParts->state.mContextToolbarStyle; });
}

void Vellum5::setContextToolbarStyle(int Style)
{
    EditScope scope;
    trap(module, "ContextToolbarStyle", given(&mParts->state, "Style", Style), [&] {
        mParts->state.mContextToolbarStyle = Style; // the menus and the strips take their looks from it
    });
}

bool Vellum5::Terminated() const
{
    return trap(module, "Terminated", &mParts->state, [&] { return mParts->state.mTerminated; });
}

bool Vellum5::Terminating() const
{
    return trap(module, "Terminating", &mParts->state, [&] { return mParts->state.mTerminating; });
}

bool Vellum5::Loaded() const
{
    return trap(module, "Loaded", &mParts->state, [&] { return mParts->state.mLoaded; });
}

QObject *Vellum5::EventProxy()
{
    return trap(module, "EventProxy", &mParts->state, [&]() -> QObject * {
        ControlState &state = mParts->state;
        if (!state.mEventProxy) state.mEventProxy = std::make_unique<::EventProxy>();
        return state.mEventProxy.get();
    });
}

VirtualCommandManager *Vellum5::CommandManager() const
{
    return trap(module, "CommandManager", &mParts->state, [&] { return mParts->state.mCommandManager.get(); });
}

void Vellum5::setCommandManager(VirtualCommandManager *CommandManager)
{
    trap(module, "CommandManager", given(&mParts->state, "CommandManager", CommandManager), [] {});
}

QObject *Vellum5::ExternalObject() const
{
    return trap(module, "ExternalObject", &mParts->state, [&] { return mParts->ed->externalObject(); });
}

void Vellum5::setExternalObject(QObject *Object)
{
    trap(module, "ExternalObject", given(&mParts->state, "Object", Object),
         [&] { mParts->ed->setExternalObject(Object); });
}

qulonglong Vellum5::hWnd() const
{
    return trap(module, "hWnd", &mParts->state, [&] { return qulonglong(winId()); });
}

qulonglong Vellum5::EditorhWnd() const
{
    bool source = false;
    return trap(module, "EditorhWnd", given(&mParts->state).locals("Source", source), [&] {
        source = mParts->state.mCurrentEditView == EditViewEnum::hvSourceEdit;
        return source ? qulonglong(mParts->txtHTMLSource->winId()) : qulonglong(mParts->ed->winId());
    });
}

qulonglong Vellum5::PageMaphWnd() const
{
    return trap(module, "PageMaphWnd", &mParts->state, [] { return qulonglong(0); }); // the strip is never shown yet
}

qulonglong Vellum5::PageTagBarhWnd() const
{
    return trap(module, "PageTagBarhWnd", &mParts->state, [] { return qulonglong(0); }); // nor is this one
}

CodeMax *Vellum5::SourceEditControl() const
{
    return trap(module, "SourceEditControl", &mParts->state, [&] { return mParts->txtHTMLSource; });
}

HTMLEditor *Vellum5::VisualEditControl() const
{
    return trap(module, "VisualEditControl", &mParts->state, [&] { return mParts->ed; });
}

IHTMLDocument2 *Vellum5::DOM() const
{
    return trap(module, "DOM", &mParts->state, [&] { return mParts->text.mDoc(); });
}
