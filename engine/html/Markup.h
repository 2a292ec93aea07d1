// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/DocumentServices.h"

namespace html {

/// Text to nodes and back, for the members of nodes. Without state: one serves every document.
class Markup final : public dom::MarkupServices
{
public:
    static Markup &instance();
    base::Ref<dom::DocumentFragment> parseFragment(dom::Document &document, const dom::Element &context,
                                                   const QString &html) override;
    QString outerHTML(const dom::Node &node) const override;
    QString innerHTML(const dom::Node &node) const override;
    bool canStandIn(const dom::ParentNode &parent, const dom::Node &content) const override;
    QString innerText(const dom::Node &node) const override;
};

} // namespace html
