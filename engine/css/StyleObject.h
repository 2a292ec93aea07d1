// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/Declarations.h"
#include "engine/dom/Element.h"

#include <QVariant>

namespace css {

class RuleObject;

/// A style that can be read and written property by property: an element's inline style, its runtime style, or a
/// rule's.
///
/// Names come in any case, with hyphens or as scripts write them; also `textDecorationUnderline` and the like, which
/// are "true" or "false". A value that the property can't have is refused with `base::Error` (invalidValue) and changes
/// nothing. "" takes a property away. A number for a length is pixels, for a colour 0xRRGGBB. Properties that we don't
/// know are text, kept as written.
///
/// A write to an inline style is one assignment of the `style` attribute; an emptied one leaves no attribute. A runtime
/// style lies over the inline one, and is never in the text. A rule's style is live.
///
/// Who holds one holds the element (or rule) that it belongs to.
class StyleObject final : public base::RefCounted
{
public:
    enum class Kind : uint8_t { Inline, Runtime, Rule };
    StyleObject(dom::Element &element, Kind kind) : mKind(kind), mElement(&element) {}
    explicit StyleObject(RuleObject &rule) : mKind(Kind::Rule), mRule(&rule) {}

    /// Hide the counting of the base: the owner's is meant. The owner itself holds it through the base.
    void ref();
    void deref();

    Kind kind() const { return mKind; }
    /// The element; null for a rule's.
    dom::Element *element() const { return mElement; }

    /// "name: value; name: value"; names in lower case.
    QString cssText() const;
    void setCssText(const QString &text);
    /// Null where it is unset.
    QString getAttribute(const QString &name) const;
    void setAttribute(const QString &name, const QString &value);
    /// Numbers as numbers; a truth value as its word; others as text.
    void setAttribute(const QString &name, const QVariant &value);
    /// Whether there was one. Silent for an unset one.
    bool removeAttribute(const QString &name);
    /// As the named members of the contract: "" where it is unset.
    QString property(const QString &name) const;
    void setProperty(const QString &name, const QVariant &value) { setAttribute(name, value); }
    /// Of an inline style: the property reads and shows so from now on, until it is written, but stands neither in the
    /// text nor in a record. For what a view does to a page that isn't the page's own.
    void showAs(const QString &name, const QString &value);
    /// Whether the name is one that a style has as a member.
    static bool isProperty(const QString &name);
    /// All members' names, as scripts write them.
    static QStringList propertyNames();

    /// The declarations in force; never null.
    base::Ref<DeclarationBlock> block() const;

private:
    void write(const base::Ref<DeclarationBlock> &block);
    ValueMode mode() const;

    Kind mKind;
    dom::Element *mElement = nullptr;
    RuleObject *mRule = nullptr;
    base::Ref<DeclarationBlock> mRuntime; ///< of a runtime style; null: empty
    base::Ref<DeclarationBlock> mShown;   ///< of an inline style, what `showAs` told; null: nothing
};

} // namespace css
