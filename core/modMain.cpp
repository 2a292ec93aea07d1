// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/modMain.h"

#include "core/modMainDump.h"
#include "engine/css/StyleObject.h"
#include "platform/FileHelper.h"

#include <QRegularExpression>

namespace modMain {

using support::attempt;
using support::given;
using support::trap;

long mInstanceCount = 0;
QString mAppName;
bool mAutoFormatHTML = true;
bool mExtendedStyleSupportEnabled = false;
bool mExtendedStyleSupportChecked = false;

void dumpModuleVariables(support::VariableDump &dump)
{
    dump.add("mInstanceCount", mInstanceCount)
        .add("mAppName", mAppName)
        .add("mAutoFormatHTML", mAutoFormatHTML)
        .add("mExtendedStyleSupportEnabled", mExtendedStyleSupportEnabled)
        .add("mExtendedStyleSupportChecked", mExtendedStyleSupportChecked);
}

void Main()
{
    static bool done = false;
    if (std::exchange(done, true)) return;
    trap("modMain", "Main", module, [] {
        support::registerGlobalVariable(QStringLiteral("mInstanceCount"),
                                        [] { return support::dumpValue(mInstanceCount); });
        support::registerGlobalVariable(QStringLiteral("mAppName"), [] { return support::dumpValue(mAppName); });
        support::registerGlobalVariable(QStringLiteral("mAutoFormatHTML"),
                                        [] { return support::dumpValue(mAutoFormatHTML); });
        const QString stored = support::SettingsStore::instance().read(support::SettingsRoot::CurrentUser,
                                                                       QStringLiteral("Software\\Brimfield\\VellumPad"),
                                                                       QStringLiteral("AutoFormatHTML"));
        mAutoFormatHTML = stored != QLatin1String("False");
    });
}

// Settings

QString RegKeyPath()
{
    return trap("modMain", "RegKeyPath", module, [] {
        return QStringLiteral("Software\\Brimfield\\") +
               (mAppName.isEmpty() ? QStringLiteral("BrimVellumPad") : mAppName);
    });
}

static double leadingNumber(const QString &text)
{
    static const QRegularExpression number(QStringLiteral("^\\s*([+-]?(\\d+\\.?\\d*|\\.\\d+)([eEdD][+-]?\\d+)?)"));
    const auto match = number.match(text);
    return match.hasMatch() ? match.captured(1).replace(QChar(u'd'), QChar(u'e'), Qt::CaseInsensitive).toDouble() : 0.0;
}

static QString settingText(const QVariant &value)
{
    if (value.typeId() == QMetaType::Bool) return booleanText(value.toBool());
    return value.toString();
}

static QString withExtra(const QString &path, const QString &extra)
{
    return extra.isEmpty() ? path : path + u'\\' + extra;
}

QVariant GetAppValue(const QString &KeyName, const QVariant &DefaultValue, int ConversionType, const QString &ExtraPath,
                     support::SettingsRoot Root, const QString &RootPath)
{
    const auto parameters = given(module, "KeyName", KeyName, "DefaultValue", DefaultValue, "ConversionType",
                                  ConversionType, "ExtraPath", ExtraPath, "Root", Root, "RootPath", RootPath);
    QString path, value;
    const auto variables = parameters.locals("Path", path, "Value", value);
    return trap<QVariant>("modMain", "GetAppValue", variables, [&](QVariant &Result) {
        path = withExtra(RootPath.isEmpty() ? RegKeyPath() : RootPath, ExtraPath);
        value = support::SettingsStore::instance().read(Root, path, KeyName);
        if (value.isEmpty()) value = settingText(DefaultValue);
        if (ConversionType == conversionNumber)
            Result = leadingNumber(value);
        else
            Result = value;
    });
}

void SetAppValue(const QString &KeyName, const QVariant &Value, const QString &ExtraPath)
{
    QString path;
    const auto parameters = given(module, "KeyName", KeyName, "Value", Value, "ExtraPath", ExtraPath);
    trap("modMain", "SetAppValue", parameters.locals("Path", path), [&] {
        path = withExtra(RegKeyPath(), ExtraPath);
        const bool flag = Value.typeId() == QMetaType::Bool;
        support::SettingsStore &store = support::SettingsStore::instance();
        store.createKey(support::SettingsRoot::CurrentUser, path);
        store.write(support::SettingsRoot::CurrentUser, path, KeyName,
                    flag ? QString::number(Value.toBool() ? 1 : 0) : Value.toString());
    });
}

bool ExtendedStyleSupportEnabled()
{
    return trap<bool>("modMain", "ExtendedStyleSupportEnabled", module, [&](bool &Result) {
        if (!mExtendedStyleSupportChecked) {
            mExtendedStyleSupportEnabled =
                support::SettingsStore::instance().read(support::SettingsRoot::LocalMachine,
                                                        QStringLiteral("Software\\Brimfield"),
                                                        QStringLiteral("ExtendedStyles")) == QLatin1String("True");
            mExtendedStyleSupportChecked = true;
        }
        Result = mExtendedStyleSupportEnabled;
    });
}

// Attributes

base::Ref<IHTMLDOMAttribute> GetAttributeNode(IHTMLElement *e, const QString &Name)
{
    base::Ref<IHTMLDOMAttribute> found;
    attempt([&] {
        if (!e) return;
        for (const auto &node : e->attributes())
            if (node->nodeName().compare(Name, Qt::CaseInsensitive) == 0) {
                found = node;
                return;
            }
    });
    return found;
}

QVariant GetAttribute(IHTMLElement *e, const QString &Name)
{
    QVariant value;
    attempt([&] {
        const auto node = GetAttributeNode(e, Name);
        if (node && node->specified()) value = node->nodeValue();
    });
    return value;
}

void SetAttribute(IHTMLElement *e, const QString &Name, const QVariant &Value)
{
    const QString text = settingText(Value);
    if (text.isEmpty()) return RemoveAttribute(e, Name);
    if (!e || GetAttribute(e, Name).toString() == text) return;
    const long failed = attempt([&] {
        base::faults::check("IHTMLElement", "setAttribute");
        e->setAttribute(Name, text);
    });
    if (failed == 0) return;
    attempt([&] {
        if (const auto node = GetAttributeNode(e, Name)) node->setNodeValue(text);
    });
}

void RemoveAttribute(IHTMLElement *e, const QString &Name)
{
    const auto node = GetAttributeNode(e, Name);
    if (!node || !node->specified()) return;
    // The value goes first: an element that refuses the removal is then left with an empty one.
    attempt([&] { node->setNodeValue(QString()); });
    attempt([&] {
        base::faults::check("IHTMLElement", "removeAttribute");
        e->removeAttribute(Name);
    });
    if (e->nodeName() == QLatin1String("IMG")) return;
    attempt([&] { e->removeAttributeNode(*node); });
}

// Styles

QString GetStyleAttribute(IHTMLElement *e, const QString &Name)
{
    QString value;
    attempt([&] {
        if (e && e->style()) value = e->style()->getAttribute(Name);
    });
    return value.isNull() ? QString() : value;
}

/// A URL as it may stand between the parentheses: one that holds what ends or breaks a bare one, in quotes. (CSS Syntax 3,
/// 4.3.6.)
static QString urlToken(const QString &url)
{
    static const QRegularExpression breaks(QStringLiteral("[\\s()'\"]"));
    if (!url.contains(breaks) || url.startsWith(u'"') || url.startsWith(u'\'')) return url;
    return u'"' + QString(url).replace(u'"', QLatin1String("\\\"")) + u'"';
}

void SetStyleAttribute(IHTMLElement *e, const QString &Name, const QVariant &Value)
{
    const QString text = Value.toString();
    if (text.isEmpty()) return RemoveStyleAttribute(e, Name);
    attempt([&] {
        if (!e || !e->style()) return;
        if (Name == QLatin1String("backgroundimage"))
            e->style()->setAttribute(Name, QStringLiteral("url(%1)").arg(urlToken(text)));
        else
            e->style()->setAttribute(Name, Value);
    });
}

void RemoveStyleAttribute(IHTMLElement *e, const QString &Name)
{
    attempt([&] {
        if (e && e->style()) e->style()->removeAttribute(Name);
    });
}

QString GetElementClassName(IHTMLElement *e)
{
    return trap("modMain", "GetElementClassName", given(module, "e", e),
                [&] { return e ? e->className() : QString(); });
}

QString GetUniqueName(IHTMLElement *e)
{
    return trap("modMain", "GetUniqueName", given(module, "e", e), [&] { return e ? e->uniqueID() : QString(); });
}

// Elements

static bool isBody(const IHTMLElement *e)
{
    return e->tagName() == QLatin1String("BODY");
}

bool IsChildElement(IHTMLElement *Parent, IHTMLElement *e)
{
    QString UniqueName;
    const auto variables = given(module, "Parent", Parent, "e", e).locals("UniqueName", UniqueName);
    return trap("modMain", "IsChildElement", variables, [&] {
        if (!Parent) return false;
        UniqueName = GetUniqueName(Parent);
        for (IHTMLElement *at = e; at && !isBody(at); at = at->parentElement())
            if (at->parentElement() && GetUniqueName(at->parentElement()) == UniqueName) return true;
        return false;
    });
}

bool IsElementEditable(IHTMLElement *e)
{
    return trap("modMain", "IsElementEditable", given(module, "e", e), [&] { return e && e->isContentEditable(); });
}

bool IsEditWrapperElement(IHTMLElement *e)
{
    QString name;
    return trap("modMain", "IsEditWrapperElement", given(module, "e", e).locals("ClassName", name), [&] {
        name = GetElementClassName(e);
        return name.contains(QLatin1String("widgetproperty"), Qt::CaseInsensitive) ||
               name.contains(QLatin1String("qsedit"), Qt::CaseInsensitive) ||
               name.contains(QLatin1String("lxedit"), Qt::CaseInsensitive);
    });
}

bool IsVisibleElement(IHTMLElement *e, bool OnlyEditable)
{
    QString name, tag;
    const auto parameters = given(module, "e", e, "OnlyEditable", OnlyEditable);
    return trap("modMain", "IsVisibleElement", parameters.locals("ClassName", name, "TagName", tag), [&] {
        if (!e) return false;
        name = GetElementClassName(e);
        if (OnlyEditable && !IsElementEditable(e)) return name == QLatin1String("BrimContentWidget");
        tag = e->tagName();
        if (tag == QLatin1String("DIV")) return !IsEditWrapperElement(e);
        if (tag != QLatin1String("SPAN")) return true;
        if (e->idAttribute().contains(QLatin1String("TaggedComment|"))) return false;
        if (name.contains(QLatin1String("lxMisspelled"), Qt::CaseInsensitive)) return false;
        return name.compare(QLatin1String("qsedit"), Qt::CaseInsensitive) != 0 &&
               name.compare(QLatin1String("widgetproperty"), Qt::CaseInsensitive) != 0;
    });
}

void RemoveSpan(IHTMLElement *e)
{
    trap("modMain", "RemoveSpan", given(module, "e", e), [&] {
        if (!e) return;
        base::Ref<IHTMLElement> keep(e);
        e->insertAdjacentText(QStringLiteral("afterend"), e->innerText());
        e->setOuterHTML(QString());
    });
}

QString GetHrefFromElement(IHTMLElement *e)
{
    return trap<QString>("modMain", "GetHrefFromElement", given(module, "e", e), [&](QString &Result) {
        if (!e) return;
        const long failed = attempt([&] {
            base::faults::check("IHTMLElement", "href");
            Result = e->href();
        });
        if (failed != 0) Result = GetHrefFromOuterHTML(e->outerHTML());
    });
}

QString ToRelativeFileName(const QString &BaseURL, const QString &FileName)
{
    const auto parameters = given(module, "BaseURL", BaseURL, "FileName", FileName);
    return trap<QString>("modMain", "ToRelativeFileName", parameters, [&](QString &Result) {
        Result = FileName;
        // From an address of the network no file can be seen.
        if (!BaseURL.isEmpty() && IsFileURL(BaseURL))
            Result = platform::FileHelper::relativeName(platform::FileHelper::folderPart(BaseURL), FileName);
    });
}

} // namespace modMain
