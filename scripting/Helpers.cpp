// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Helpers.h"

#include "control/Vellum5Parts.h"
#include "core/SelectionPoint.h"
#include "core/modMain.h"
#include "engine/css/StyleObject.h"
#include "platform/InterfacesDetail.h"
#include "platform/DispatchObject.h"
#include "scripting/Interpreter.h"
#include "scripting/Objects.h"

namespace scripting {

using platform::Arguments;
using platform::Value;

namespace {

using Helper = std::function<Value(Interpreter &, const Arguments &)>;

QString text(const Arguments &arguments, size_t i)
{
    return i < arguments.size() ? arguments[i].toString() : QString();
}

bool flag(const Arguments &arguments, size_t i)
{
    return i < arguments.size() && arguments[i].toBoolean();
}

dom::Element *element(const Arguments &arguments, size_t i)
{
    return i < arguments.size() ? scripting::elementOf(arguments[i]) : nullptr;
}

using platform::valueToVariant;
using platform::variantToValue;

/// What a call without its argument gets, as from late binding.
const Value &needed(const Arguments &arguments, size_t i)
{
    if (i >= arguments.size()) throw base::Error(platform::argumentMissing, QStringLiteral("Argument not optional"));
    return arguments[i];
}

QVariant variant(const Arguments &arguments, size_t i)
{
    return i < arguments.size() ? valueToVariant(arguments[i]) : QVariant();
}

Value getAppValue(const Arguments &a)
{
    const auto root = support::SettingsStore::rootByName(text(a, 4)).value_or(support::SettingsRoot::CurrentUser);
    return variantToValue(modMain::GetAppValue(text(a, 0), variant(a, 1),
                                            a.size() > 2 && a[2].isNumber() ? a[2].toInt() : 0, text(a, 3), root, text(a, 5)));
}

Value inStrEx(const Arguments &a)
{
    const bool ignoresCase = a.size() > 3 && a[3].toInt() == 1;
    return Value(qint64(modMain::InStrEx(needed(a, 0).toInt(), text(a, 1), text(a, 2),
                                         ignoresCase ? modMain::Compare::Text : modMain::Compare::Binary)));
}

template <class Function> Helper textHelper(Function function)
{
    return [function](Interpreter &, const Arguments &a) { return Value(function(text(a, 0))); };
}

void addTextHelpers(QHash<QString, Helper> &table)
{
    const auto add = [&table](const char *name, Helper helper) { table.insert(QString::fromLatin1(name).toLower(), helper); };
    using In = Interpreter;
    add("ParseURL", [](In &, const Arguments &a) { return Value(modMain::ParseURL(text(a, 0), text(a, 1))); });
    add("InStrEx", [](In &, const Arguments &a) { return inStrEx(a); });
    add("IsFileURL", textHelper(modMain::IsFileURL));
    add("FileURLToFileName", textHelper(modMain::FileURLToFileName));
    add("RemoveEntities", textHelper(modMain::RemoveEntities));
    add("GetHrefFromOuterHTML", textHelper(modMain::GetHrefFromOuterHTML));
    add("ReturnBody", textHelper(modMain::ReturnBody));
    add("ReturnNonBody", [](In &, const Arguments &a) { return Value(modMain::ReturnNonBody(text(a, 0), text(a, 1))); });
    add("RemoveLeadingAndTrailingLineFeeds", textHelper(modMain::RemoveLeadingAndTrailingLineFeeds));
    add("RegKeyPath", [](In &, const Arguments &) { return Value(modMain::RegKeyPath()); });
    add("GetAppValue", [](In &, const Arguments &a) { return getAppValue(a); });
    add("SetAppValue", [](In &, const Arguments &a) {
        modMain::SetAppValue(text(a, 0), variant(a, 1), text(a, 2));
        return Value();
    });
    add("ExtendedStyleSupportEnabled", [](In &, const Arguments &) { return Value(modMain::ExtendedStyleSupportEnabled()); });
    add("ToRelativeFileName", [](In &in, const Arguments &a) {
        return Value(modMain::ToRelativeFileName(in.control().BaseURL(), text(a, a.size() > 1 ? 1 : 0)));
    });
}

void addElementHelpers(QHash<QString, Helper> &table)
{
    const auto add = [&table](const char *name, Helper helper) { table.insert(QString::fromLatin1(name).toLower(), helper); };
    using In = Interpreter;
    add("GetAttribute", [](In &, const Arguments &a) { return variantToValue(modMain::GetAttribute(element(a, 0), text(a, 1))); });
    add("SetAttribute", [](In &, const Arguments &a) {
        modMain::SetAttribute(element(a, 0), text(a, 1), variant(a, 2));
        return Value();
    });
    add("RemoveAttribute", [](In &, const Arguments &a) {
        modMain::RemoveAttribute(element(a, 0), text(a, 1));
        return Value();
    });
    add("GetAttributeNode", [](In &, const Arguments &a) {
        return attributeValue(modMain::GetAttributeNode(element(a, 0), text(a, 1)).get());
    });
    add("GetStyleAttribute", [](In &, const Arguments &a) { return Value(modMain::GetStyleAttribute(element(a, 0), text(a, 1))); });
    add("SetStyleAttribute", [](In &, const Arguments &a) {
        modMain::SetStyleAttribute(element(a, 0), text(a, 1), variant(a, 2));
        return Value();
    });
    add("RemoveStyleAttribute", [](In &, const Arguments &a) {
        modMain::RemoveStyleAttribute(element(a, 0), text(a, 1));
        return Value();
    });
    add("GetElementClassName", [](In &, const Arguments &a) { return Value(modMain::GetElementClassName(element(a, 0))); });
    add("GetUniqueName", [](In &, const Arguments &a) { return Value(modMain::GetUniqueName(element(a, 0))); });
    add("IsChildElement", [](In &, const Arguments &a) { return Value(modMain::IsChildElement(element(a, 0), element(a, 1))); });
    add("IsVisibleElement", [](In &, const Arguments &a) { return Value(modMain::IsVisibleElement(element(a, 0), flag(a, 1))); });
    add("IsElementEditable", [](In &, const Arguments &a) { return Value(modMain::IsElementEditable(element(a, 0))); });
    add("IsEditWrapperElement", [](In &, const Arguments &a) { return Value(modMain::IsEditWrapperElement(element(a, 0))); });
    add("RemoveSpan", [](In &, const Arguments &a) {
        modMain::RemoveSpan(element(a, 0));
        return Value();
    });
    add("GetHrefFromElement", [](In &, const Arguments &a) { return Value(modMain::GetHrefFromElement(element(a, 0))); });
}

void addRegionHelpers(QHash<QString, Helper> &table)
{
    const auto add = [&table](const char *name, auto function) {
        table.insert(QString::fromLatin1(name).toLower(), [function](Interpreter &in, const Arguments &a) {
            return function(in.control().parts().regions, element(a, 0));
        });
    };
    using Regions = EditableRegions;
    add("GetEditWrapperElement", [](Regions &r, dom::Element *e) { return elementValue(r.GetEditWrapperElement(e)); });
    add("IsEditableSpan", [](Regions &r, dom::Element *e) { return Value(r.IsEditableSpan(e)); });
    add("GetEditableSpan", [](Regions &r, dom::Element *e) { return elementValue(r.GetEditableSpan(e)); });
    add("IsElementInEditableSpan", [](Regions &r, dom::Element *e) { return Value(r.IsElementInEditableSpan(e)); });
    add("IsWidgetElement", [](Regions &r, dom::Element *e) { return Value(r.IsWidgetElement(e)); });
    add("IsWidgetPropertyElement", [](Regions &r, dom::Element *e) { return Value(r.IsWidgetPropertyElement(e)); });
    add("ContainsWidgetElement", [](Regions &r, dom::Element *e) { return Value(r.ContainsWidgetElement(e)); });
    add("IsInWidget", [](Regions &r, dom::Element *e) { return Value(r.IsInWidget(e)); });
    add("GetWidgetElement", [](Regions &r, dom::Element *e) { return elementValue(r.GetWidgetElement(e)); });
    add("GetParentAnchor", [](Regions &r, dom::Element *e) { return elementValue(r.GetParentAnchor(e)); });
}

Value rangeValue(const SelectionRange &range)
{
    if (range.control) return platform::valueOf(range.control);
    return range.text ? platform::valueOf(range.text) : Value::nothing();
}

/// The document given first; the live one where Nothing is.
dom::Document *documentOf(Interpreter &in, const Arguments &arguments)
{
    dom::Node *const node = arguments.empty() || arguments[0].isEmpty() ? nullptr : platform::nodeOf(arguments[0]);
    return node && node->type() == dom::NodeType::Document ? static_cast<dom::Document *>(node)
                                                           : in.control().parts().text.mDoc();
}

/// `SaveSelectionPoint DOM` and `RestoreSelectionPoint DOM LENGTH START`: both change the pair that they are given.
HelperResult selectionPoint(Interpreter &in, const Arguments &a, bool saves)
{
    int length = a.size() > 1 ? a[1].toInt() : 0;
    QString start = text(a, 2);
    if (saves)
        modMain::SaveSelectionPoint(documentOf(in, a), length, start);
    else
        modMain::RestoreSelectionPoint(documentOf(in, a), length, start);
    HelperResult result;
    result.references.emplace_back(QStringLiteral("SelectionLength"), Value(qint64(length)));
    result.references.emplace_back(QStringLiteral("CharactersFromStart"), Value(start));
    return result;
}

void addSelectionHelpers(QHash<QString, Helper> &table)
{
    const auto add = [&table](const char *name, Helper helper) { table.insert(QString::fromLatin1(name).toLower(), helper); };
    using In = Interpreter;
    add("GetSelectedElement", [](In &in, const Arguments &) {
        return elementValue(in.control().parts().selection.GetSelectedElement().get());
    });
    add("SelectElement", [](In &in, const Arguments &a) {
        in.control().parts().selection.SelectElement(element(a, 0));
        return Value();
    });
    add("SelectPageElement", [](In &in, const Arguments &a) {
        in.control().parts().selection.SelectPageElement(text(a, 0));
        return Value();
    });
    add("GetCaretPosition", [](In &in, const Arguments &) {
        const QPoint at = in.control().parts().selection.GetCaretPosition();
        return Value(platform::ValueList{Value(qint64(at.x())), Value(qint64(at.y()))});
    });
    add("RemoveSpellMarkersFromSelection", [](In &in, const Arguments &) {
        in.control().parts().host.RemoveSpellMarkersFromSelection();
        return Value();
    });
    add("mChangeManager_ElementChanged", [](In &in, const Arguments &a) {
        in.control().parts().events.mChangeManager_ElementChanged(element(a, 0));
        return Value();
    });
    add("ForceSelectedElementChanged", [](In &in, const Arguments &) {
        in.control().parts().events.ForceSelectedElementChanged();
        return Value();
    });
    add("CreateRange", [](In &in, const Arguments &a) { return rangeValue(modMain::CreateRange(documentOf(in, a))); });
    add("RangeForElement", [](In &, const Arguments &a) { return rangeValue(modMain::RangeForElement(element(a, 0))); });
    add("GetCurrentSelection", [](In &in, const Arguments &) {
        dom::Document *const document = in.control().DOM();
        if (!document || !in.control().parts().selection.GetCurrentSelection()) return Value::nothing();
        const Value selection = platform::interfaces::selectionOf(*document);
        return platform::callMember(selection.toObject(), QStringLiteral("createRange")).value;
    });
}

void addControlHelpers(QHash<QString, Helper> &table)
{
    const auto add = [&table](const char *name, Helper helper) { table.insert(QString::fromLatin1(name).toLower(), helper); };
    using In = Interpreter;
    add("AddHTMLWrapper", [](In &in, const Arguments &a) { return Value(in.control().parts().text.AddHTMLWrapper(text(a, 0))); });
    add("StyleSheetLinks", [](In &in, const Arguments &) { return Value(in.control().parts().text.StyleSheetLinks()); });
    add("FormatHTML", [](In &in, const Arguments &a) { return Value(in.control().parts().text.FormatHTML(text(a, 0), flag(a, 1))); });
    add("GetInternalHTMLText", [](In &in, const Arguments &) { return Value(in.control().parts().text.GetInternalHTMLText()); });
    add("SetInternalHTMLText", [](In &in, const Arguments &a) {
        in.control().parts().text.SetInternalHTMLText(text(a, 0), flag(a, 1));
        return Value();
    });
    add("UpdateInternalHTMLText", [](In &in, const Arguments &) {
        in.control().parts().text.UpdateInternalHTMLText();
        return Value();
    });
    add("GetVisualHTML", [](In &in, const Arguments &) { return Value(in.control().parts().text.GetVisualHTML()); });
    add("SetedDocumentHTML", [](In &in, const Arguments &a) {
        in.control().parts().text.SetedDocumentHTML(text(a, 0));
        return Value();
    });
    add("ShutDownBeforeReload", [](In &in, const Arguments &) {
        in.control().parts().text.ShutDownBeforeReload();
        return Value();
    });
    add("ResetNavSound", [](In &in, const Arguments &) {
        in.control().parts().text.ResetNavSound();
        return Value();
    });
    add("mDoc", [](In &in, const Arguments &) { return documentValue(in.control().parts().text.mDoc()); });
    add("UpdateCurrentView", [](In &in, const Arguments &a) {
        in.control().parts().views.UpdateCurrentView(flag(a, 0));
        return Value();
    });
    add("UpdateView", [](In &in, const Arguments &a) {
        in.control().parts().views.UpdateView(EditViewEnum(needed(a, 0).toInt()), flag(a, 1));
        return Value();
    });
    add("UserControl_Resize", [](In &in, const Arguments &) {
        in.control().parts().views.UserControl_Resize();
        return Value();
    });
    add("conEditors_Resize", [](In &in, const Arguments &a) {
        in.control().parts().views.conEditors_Resize(needed(a, 0).toInt(), needed(a, 1).toInt());
        return Value();
    });
    add("FlatStrip_Change", [](In &in, const Arguments &a) {
        in.control().parts().views.FlatStrip_Change(needed(a, 0).toInt());
        return Value();
    });
    add("txtHTMLSource_Change", [](In &in, const Arguments &) {
        in.control().parts().events.txtHTMLSource_Change();
        return Value();
    });
    add("timChange_Timer", [](In &in, const Arguments &) {
        in.control().parts().events.timChange_Timer();
        return Value();
    });
    add("ed_DocumentComplete", [](In &in, const Arguments &a) {
        in.control().parts().text.ed_DocumentComplete(text(a, 0));
        return Value();
    });
    add("IsPropertySheetVisible", [](In &in, const Arguments &) { return Value(in.control().parts().views.IsPropertySheetVisible()); });
    add("RaiseChangeEvent", [](In &in, const Arguments &a) {
        in.control().parts().events.RaiseChangeEvent(flag(a, 0));
        return Value();
    });
    add("DocChanged", [](In &in, const Arguments &) {
        in.control().parts().events.DocChanged();
        return Value();
    });
    add("SetRefreshToolsTimer", [](In &in, const Arguments &) {
        in.control().parts().events.SetRefreshToolsTimer();
        return Value();
    });
    add("ed_NavigateComplete", [](In &in, const Arguments &) {
        in.control().parts().events.ed_NavigateComplete();
        return Value();
    });
    add("IsIdle", [](In &in, const Arguments &) { return Value(in.control().parts().events.IsIdle()); });
    add("RefreshTools", [](In &in, const Arguments &) {
        in.control().parts().host.RefreshTools();
        return Value();
    });
    add("CreateNewChangeManager", [](In &in, const Arguments &) {
        in.control().parts().changes.CreateNewChangeManager();
        return Value();
    });
    add("KillChangeManager", [](In &in, const Arguments &) {
        in.control().parts().changes.KillChangeManager();
        return Value();
    });
    const auto manager = [](In &in) -> ChangeManager & {
        if (!in.state().mChangeManager) throw ScriptError(QStringLiteral("no manager"));
        return *in.state().mChangeManager;
    };
    add("Flush", [manager](In &in, const Arguments &) {
        manager(in).Flush();
        return Value();
    });
    add("UndoCount", [manager](In &in, const Arguments &) { return Value(manager(in).UndoCount()); });
    add("RedoCount", [manager](In &in, const Arguments &) { return Value(manager(in).RedoCount()); });
    add("IsUserMode", [](In &in, const Arguments &) { return Value(in.control().parts().host.IsUserMode()); });
    add("ExtenderVisible", [](In &in, const Arguments &) { return Value(in.control().parts().host.ExtenderVisible(false)); });
    add("OutputDebugString", [](In &in, const Arguments &a) {
        in.control().parts().host.OutputDebugString(text(a, 0));
        return Value();
    });
    add("FormatVariable", [](In &, const Arguments &a) {
        const int depth = a.size() > 2 ? a[2].toInt() : support::dumpDepth;
        return Value(support::FormatVariable(text(a, 0), a.size() > 1 ? dumpOf(a[1]) : support::DumpValue::empty(), depth));
    });
    add("Main", [](In &, const Arguments &) {
        modMain::Main();
        return Value();
    });
}

HelperResult getEditableSpans(Interpreter &in, const Arguments &a)
{
    platform::Collection spans;
    in.control().parts().regions.GetEditableSpans(element(a, 0), spans);
    HelperResult result;
    result.fillsCollection = true;
    for (const QVariant &span : spans) {
        dom::Element *const e = span.value<base::Ref<dom::Element>>().get();
        result.references.emplace_back(e->idAttribute(), elementValue(e));
    }
    return result;
}

} // namespace

HelperResult callHelper(Interpreter &in, const QString &name, const Arguments &arguments)
{
    static const auto table = [] {
        QHash<QString, Helper> table;
        addTextHelpers(table);
        addElementHelpers(table);
        addRegionHelpers(table);
        addSelectionHelpers(table);
        addControlHelpers(table);
        return table;
    }();
    if (name.compare(QLatin1String("GetEditableSpans"), Qt::CaseInsensitive) == 0) return getEditableSpans(in, arguments);
    for (const bool saves : {true, false}) {
        const char *const point = saves ? "SaveSelectionPoint" : "RestoreSelectionPoint";
        if (name.compare(QLatin1String(point), Qt::CaseInsensitive) == 0) return selectionPoint(in, arguments, saves);
    }
    const auto found = table.constFind(name.toLower());
    if (found == table.constEnd()) notAvailable();
    return {{(*found)(in, arguments), {}}};
}

} // namespace scripting
