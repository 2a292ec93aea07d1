// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Ref.h"
#include "engine/css/Value.h"

namespace css {

/// One `name: value` as it was written. What we don't know, or can't read, stays in the text and has no effect.
struct Declaration
{
    QString name;    ///< canonical, or as written where we don't know it
    QString written; ///< how it goes back into the text: lower case where we know it
    QString text;    ///< the value, without "!important"
    bool important = false;
    std::vector<PropertyValue> values; ///< what it sets; empty where it has no effect
};

/// The declarations of a rule or of a `style` attribute, in their order, as they can be read and written property by
/// property. Shorthands stay as they were written. Immutable once it takes part in the cascade: a write makes a copy.
class DeclarationBlock final : public base::RefCounted
{
public:
    static base::Ref<DeclarationBlock> parse(const QString &text, ValueMode mode);
    static base::Ref<DeclarationBlock> parse(const Tokens &tokens, size_t from, size_t to, const QString &text,
                                             ValueMode mode);
    base::Ref<DeclarationBlock> copy() const;

    const std::vector<Declaration> &declarations() const { return mDeclarations; }
    bool isEmpty() const { return mDeclarations.empty(); }
    /// Against which addresses in it are resolved; empty: the document's base.
    const QString &baseURL() const { return mBaseURL; }
    void setBaseURL(const QString &url) { mBaseURL = url; }
    /// "name: value; name: value", no semicolon at the end.
    QString text() const;

    /// The value of a property or shorthand; null where it is unset. The name in any form.
    QString value(const QString &name) const;
    /// Writes one. "" removes. A number without unit is pixels; a whole number for a colour has red in its high byte.
    /// Throws `base::Error` (invalidValue) for a value that the property can't have; nothing is written then.
    void setValue(const QString &name, const QString &value);
    /// Silent for an unset one. Whether something went.
    bool remove(const QString &name);

private:
    QString longhandText(PropertyId id) const;
    QString shorthandText(Shorthand shorthand) const;
    const Declaration *effective(PropertyId id, const Value **value) const;
    void put(Declaration declaration);
    void breakUp(size_t index, const std::vector<PropertyId> &without);

    std::vector<Declaration> mDeclarations;
    QString mBaseURL;
};

/// The name under which the text of a style sheet means a property: canonical, or as written where we don't know it.
QString nameInSheet(const QString &written);

} // namespace css
