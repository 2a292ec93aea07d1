// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/StyleObject.h"
#include "engine/css/StyleSheet.h"

namespace css {

class Services;
class StyleSheetObject;

/// A rule of a sheet with selectors. Lives as long as someone holds it; once its sheet was rewritten without it, it
/// answers with what it was and writes into nothing.
class RuleObject final : public base::RefCounted
{
public:
    RuleObject(StyleSheetObject &sheet, StyleRule &rule);
    ~RuleObject() override;

    /// Element names in capitals, the rest as written; a list with commas is one rule.
    QString selectorText() const;
    void setSelectorText(const QString &text);
    StyleObject *style() { return mStyle; }
    StyleSheetObject *sheet() const { return mSheet.get(); }

private:
    friend class StyleObject;
    friend class StyleSheetObject;
    void write(const base::Ref<DeclarationBlock> &block);
    base::Ref<StyleSheetObject> mSheet;
    base::Ref<StyleRule> mRule;
    StyleObject *mStyle; ///< owned
};

/// A sheet of the document: of a STYLE element, of a LINK, or made by `createStyleSheet`.
///
/// Writes to a STYLE element's sheet rewrite the element's text, through the document's door; only the rule that was
/// written to is made anew, what stands around it stays to the letter. A linked sheet's writes stay in memory, a
/// created one's touch neither tree nor log.
class StyleSheetObject final : public base::RefCounted
{
public:
    enum class Kind : uint8_t { Style, Link, Created };
    StyleSheetObject(Services &services, Kind kind, dom::Element *owner);

    Kind kind() const { return mKind; }
    /// The STYLE or LINK element; null for a created sheet, and once the element has left the document.
    dom::Element *owningElement() const { return mOwner; }
    /// As written, "" for STYLE and created sheets.
    QString href() const;
    QString media() const;
    bool disabled() const { return mDisabled; }
    void setDisabled(bool disabled);
    /// Whether a linked sheet's file could be read.
    bool isLoaded() const { return mLoaded; }

    /// The sheet's whole text; a write makes the rules.
    QString cssText() const;
    void setCssText(const QString &text);

    /// Rules with selectors outside of at-rules, 0-based.
    uint32_t ruleCount() const;
    /// Null for an index that isn't there.
    base::Ref<RuleObject> rule(uint32_t index);
    /// -1 (or anything beyond) is the end. Answers the new rule's index. Blank declarations make an empty rule. Throws
    /// invalidValue for a selector that is blank or would break out of the rule.
    int addRule(const QString &selector, const QString &css, int index = -1);
    /// Throws subscriptOutOfRange for an index that isn't there.
    void removeRule(int index);

    const base::Ref<StyleSheet> &sheet() const { return mSheet; }
    const QString &baseURL() const { return mBaseURL; }

private:
    friend class Services;
    friend class RuleObject;
    void load(const QString &text, const QString &baseURL);
    void setBases(std::vector<Rule> &rules);
    Rule *findRule(const StyleRule &rule);
    size_t position(uint32_t index) const;
    void written();

    Services *mServices; ///< null once they are gone
    Kind mKind;
    dom::Element *mOwner;
    base::Ref<StyleSheet> mSheet;
    QString mSource;  ///< a STYLE element's text as the sheet was last made of it
    QString mBaseURL; ///< a linked sheet's own address
    QString mAddress; ///< the resolved address that was loaded
    bool mLoaded = false;
    bool mDisabled = false;
    std::vector<RuleObject *> mObjects; ///< those that someone holds
};

} // namespace css
