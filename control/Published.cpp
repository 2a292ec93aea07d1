// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Published.h"

#include "commands/VirtualCommandManager.h"
#include "control/Vellum5.h"
#include "platform/ClassFactory.h"
#include "platform/CodeMax.h"
#include "platform/ControlTables.h"
#include "platform/DispatchObject.h"
#include "platform/Interfaces.h"

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

} // namespace

void publishControl()
{
    static bool done = false;
    if (std::exchange(done, true)) return;
    platform::registerDocumentTypes();
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
