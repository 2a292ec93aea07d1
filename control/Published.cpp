// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Published.h"

#include "commands/VirtualCommandManager.h"
#include "control/Vellum5.h"
#include "platform/ClassFactory.h"
#include "platform/CodeMax.h"
#include "platform/ControlTables.h"
#include "platform/DispatchObject.h"
#include "platform/Interfaces.h"
#include "platform/SurfaceNumbers.h"

using platform::Value;

namespace {

Vellum5 &control(QObject &object)
{
    return static_cast<Vellum5 &>(object);
}

template <auto Get> Value getObject(QObject &object)
{
    auto *member = (control(object).*Get)();
    return member ? platform::valueOf(static_cast<QObject *>(member)) : Value::nothing();
}

const platform::ClassRegistration registration("VellumKit5.Vellum5", "WYSIWYG HTML editing control", [](QWidget *parent) {
    return static_cast<QObject *>(new Vellum5(parent));
});

HTMLEditor &surfaceOf(QObject &object)
{
    return static_cast<HTMLEditor &>(object);
}

template <auto Get, auto Set> platform::MemberBinding flag(const char *name)
{
    return {name, [](QObject &object) { return Value((surfaceOf(object).*Get)()); },
            [](QObject &object, const Value &value) { (surfaceOf(object).*Set)(value.toBoolean()); }};
}

/// The surface's members by the numbers that its users know.
void publishSurface()
{
    using namespace surfacenumbers;
    static const std::vector<platform::MemberRow> rows = {
        {memberDocument, "document", "Surface"},
        {memberBaseURL, "BaseURL", "Surface"},
        {memberShowDetails, "ShowDetails", "Surface"},
        {memberShowBorders, "ShowBorders", "Surface"},
        {memberEditMode, "EditMode", "Surface"},
        {memberAutoSelectEditableSpans, "AutoSelectEditableSpans", "Surface"},
        {memberHasFocus, "HasFocus", "Surface"},
    };
    platform::publish(
        HTMLEditor::staticMetaObject, "HTMLEditor", rows,
        {
            {"document",
             [](QObject &object) { return platform::valueOf(static_cast<dom::Node *>(surfaceOf(object).document())); }, {}},
            {"BaseURL", [](QObject &object) { return Value(surfaceOf(object).baseUrl()); },
             [](QObject &object, const Value &value) { surfaceOf(object).setBaseUrl(value.toString()); }},
            flag<&HTMLEditor::showDetails, &HTMLEditor::setShowDetails>("ShowDetails"),
            flag<&HTMLEditor::showBorders, &HTMLEditor::setShowBorders>("ShowBorders"),
            {"EditMode", [](QObject &object) { return Value(int(surfaceOf(object).editMode())); },
             [](QObject &object, const Value &value) {
                 surfaceOf(object).setEditMode(dom::EditMode(std::clamp(value.toInt(), 0, 2)));
             }},
            flag<&HTMLEditor::autoSelectEditableSpans, &HTMLEditor::setAutoSelectEditableSpans>("AutoSelectEditableSpans"),
            {"HasFocus", [](QObject &object) { return Value(surfaceOf(object).hasFocus()); }, {}},
        });
}

} // namespace

void publishControl()
{
    static bool done = false;
    if (std::exchange(done, true)) return;
    platform::registerDocumentTypes();
    publishSurface();
    platform::publish(
        Vellum5::staticMetaObject, platform::control::interfaceName, platform::control::members(),
        {
            {"DOM", [](QObject &object) { return platform::valueOf(static_cast<dom::Node *>(control(object).DOM())); }, {}},
            {"CommandManager", &getObject<&Vellum5::CommandManager>, {}},
            {"SourceEditControl", &getObject<&Vellum5::SourceEditControl>, {}},
            {"VisualEditControl", &getObject<&Vellum5::VisualEditControl>, {}},
            {"StyleSheets",
             [](QObject &object) { return platform::valueOf(static_cast<QObject *>(control(object).StyleSheets().get())); },
             {}},
        });
}
