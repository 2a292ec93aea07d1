// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Published.h"

#include "base/Error.h"
#include "commands/VirtualCommandManager.h"
#include "control/EventProxy.h"
#include "control/Vellum5.h"
#include "platform/ClassFactory.h"
#include "platform/CodeMax.h"
#include "platform/ControlTables.h"
#include "platform/DispatchObject.h"
#include "platform/DispatchTable.h"
#include "platform/Interfaces.h"
#include "engine/ranges/RangeActions.h"
#include "platform/InterfacesDetail.h"
#include "platform/Published.h"
#include "platform/SelectedCells.h"

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

/// The collection behind a value; a copy where somebody else owns it. Null for Nothing.
std::shared_ptr<platform::Collection> collectionIn(const Value &value)
{
    const platform::ObjectRef &object = value.toObject();
    if (object.isNothing()) return nullptr;
    auto *collection = qobject_cast<platform::Collection *>(object.qobject());
    if (!collection) throw base::Error(base::errors::typeMismatch, QStringLiteral("Type mismatch"));
    if (auto shared = collection->weak_from_this().lock()) return shared;
    auto copy = std::make_shared<platform::Collection>();
    for (const QVariant &item : *collection)
        copy->Add(item);
    return copy;
}

void publishCommandManager()
{
    using M = VirtualCommandManager;
    using platform::Arguments;
    auto interface = std::make_unique<platform::Interface>(QStringLiteral("VirtualCommandManager"));
    platform::InterfaceTable<M>(*interface)
        .property(
            1, "Style", [](M &m) { return Value(m.Style()); }, [](M &m, const Value &v) { m.setStyle(v.toString()); })
        .property(
            2, "FontSize", [](M &m) { return Value(m.FontSize()); },
            [](M &m, const Value &v) { m.setFontSize(v.toInt()); })
        .property(
            3, "FontName", [](M &m) { return Value(m.FontName()); },
            [](M &m, const Value &v) { m.setFontName(v.toString()); })
        .indexed(
            4, "CommandEnabled(Name)", [](M &m, Arguments &a) { return Value(m.CommandEnabled(a[0].toString())); },
            [](M &m, Arguments &a, const Value &v) { m.setCommandEnabled(a[0].toString(), v.toBoolean()); })
        .indexed(
            5, "CommandChecked(Name)", [](M &m, Arguments &a) { return Value(m.CommandChecked(a[0].toString())); },
            [](M &m, Arguments &a, const Value &v) { m.setCommandChecked(a[0].toString(), v.toBoolean()); })
        .indexed(
            6, "CommandVisible(Name)", [](M &m, Arguments &a) { return Value(m.CommandVisible(a[0].toString())); },
            [](M &m, Arguments &a, const Value &v) { m.setCommandVisible(a[0].toString(), v.toBoolean()); })
        .method(7, "SetAllDisabled()",
                [](M &m, Arguments &) {
                    m.SetAllDisabled();
                    return Value();
                })
        .property(
            8, "Dirty", [](M &m) { return Value(m.Dirty()); }, [](M &m, const Value &v) { m.setDirty(v.toBoolean()); })
        .missing(9, "SetCommandState");
    platform::publish(VirtualCommandManager::staticMetaObject, std::move(interface));
}

const platform::ClassRegistration registration("VellumKit5.Vellum5", "WYSIWYG HTML editing control",
                                               [](QWidget *parent) {
                                                   return static_cast<QObject *>(new Vellum5(parent));
                                               });

const platform::Publisher publisher(&publishControl);

} // namespace

void publishControl()
{
    static bool done = false;
    if (std::exchange(done, true)) return;
    platform::registerDocumentTypes();
    platform::publish(
        Vellum5::staticMetaObject, platform::control::interfaceName, platform::control::members(),
        {
            {"DOM",
             [](QObject &object) { return platform::valueOf(static_cast<dom::Node *>(control(object).DOM())); },
             {}},
            {"SelectedElement",
             [](QObject &object) {
                 return platform::valueOf(static_cast<dom::Node *>(control(object).SelectedElement().get()));
             },
             {}},
            {"SelectedCells",
             [](QObject &object) { return platform::selectedCellsValue(*control(object).VisualEditControl()); },
             {}},
            {"SelectionObject",
             [](QObject &object) {
                 ranges::SelectionObject *const selection = control(object).SelectionObject();
                 return selection ? platform::interfaces::selectionOf(selection->document()) : Value::nothing();
             },
             {}},
            // A host may write what it has read, or its own: nothing comes of it.
            {"CommandManager", &getObject<&Vellum5::CommandManager>,
             [](QObject &object, const Value &) { control(object).setCommandManager(nullptr); }},
            {"SourceEditControl", &getObject<&Vellum5::SourceEditControl>, {}},
            {"VisualEditControl", &getObject<&Vellum5::VisualEditControl>, {}},
            {"StyleSheets",
             [](QObject &object) {
                 return platform::valueOf(static_cast<QObject *>(control(object).StyleSheets().get()));
             },
             [](QObject &object, const Value &value) { control(object).setStyleSheets(collectionIn(value)); }},
        });
    platform::publishSurface();
    platform::publishSourceEditor();
    publishCommandManager();
    platform::publish(EventProxy::staticMetaObject, std::make_unique<platform::Interface>(QStringLiteral("EventProxy")));
    platform::publishCollection();
}
