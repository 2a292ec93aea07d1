// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/modMainText.h"
#include "platform/Contract.h"
#include "support/SettingsStore.h"

#include <QString>
#include <QVariant>

/// The shared toolbox of the control: module state that all controls of the process have in common, the settings, and
/// access to attributes and styles. Elements may be Nothing (null) everywhere; the answer is then empty. Nothing here
/// raises.
namespace modMain {

// Module state
extern long mInstanceCount;                     ///< initialised controls
extern QString mAppName;                        ///< the host application's word in the settings path
extern bool mAutoFormatHTML;                    ///< whether `FormatHTML` formats, in every control
extern bool mExtendedStyleSupportEnabled;       ///< cached answer of `ExtendedStyleSupportEnabled`
extern bool mExtendedStyleSupportChecked;

/// Runs once a process, before the first control is made; calling it again does nothing.
void Main();

/// What a settings value becomes.
constexpr int conversionNumber = 4;

QString RegKeyPath();
/// The value, or `DefaultValue` where none or an empty one is stored. With `conversionNumber` the value's leading number
/// (a double), else a string. `RootPath` empty means `RegKeyPath()`.
QVariant GetAppValue(const QString &KeyName, const QVariant &DefaultValue, int ConversionType = 0,
                     const QString &ExtraPath = {},
                     support::SettingsRoot Root = support::SettingsRoot::CurrentUser, const QString &RootPath = {});
/// Under `RegKeyPath()`. COMPAT: a boolean is stored as 1 or 0; a setting that is read as "True" must be written as that
/// text.
void SetAppValue(const QString &KeyName, const QVariant &Value, const QString &ExtraPath = {});
bool ExtendedStyleSupportEnabled();

/// The value of an attribute that is specified; invalid (Empty) otherwise.
QVariant GetAttribute(IHTMLElement *e, const QString &Name);
/// "" removes; the value that is there is left alone, so that nothing is recorded.
void SetAttribute(IHTMLElement *e, const QString &Name, const QVariant &Value);
void RemoveAttribute(IHTMLElement *e, const QString &Name);
/// Nothing for an attribute that the element can't have.
base::Ref<IHTMLDOMAttribute> GetAttributeNode(IHTMLElement *e, const QString &Name);

QString GetStyleAttribute(IHTMLElement *e, const QString &Name);
/// "" removes. For "backgroundimage" the value is a plain URL, the wrapper is added here.
void SetStyleAttribute(IHTMLElement *e, const QString &Name, const QVariant &Value);
void RemoveStyleAttribute(IHTMLElement *e, const QString &Name);

QString GetElementClassName(IHTMLElement *e);
QString GetUniqueName(IHTMLElement *e);
/// Is `Parent` an ancestor of `e`? False at BODY.
bool IsChildElement(IHTMLElement *Parent, IHTMLElement *e);
/// Whether strips and selection walks show an element.
bool IsVisibleElement(IHTMLElement *e, bool OnlyEditable);
bool IsElementEditable(IHTMLElement *e);
bool IsEditWrapperElement(IHTMLElement *e);
/// Replaces the element by its text.
void RemoveSpan(IHTMLElement *e);
QString GetHrefFromElement(IHTMLElement *e);
/// The file's name seen from the folder of the base URL.
QString ToRelativeFileName(const QString &BaseURL, const QString &FileName);

/// Texts of booleans as the store and the bag hold them.
inline QString booleanText(bool value)
{
    return value ? QStringLiteral("True") : QStringLiteral("False");
}

} // namespace modMain
