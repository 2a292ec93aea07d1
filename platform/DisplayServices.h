// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Document.h"

#include <QPoint>

namespace platform {

/// The caret of a document that is shown.
class IHTMLCaret final : public base::RefCounted
{
public:
    explicit IHTMLCaret(dom::Document &document) : mDocument(&document) {}
    /// The top left corner of the caret: a point of the screen, or of the view. Fails where no caret shows.
    void GetLocation(QPoint &point, bool global = true) const;

private:
    base::Ref<dom::Document> mDocument;
};

class IDisplayServices final : public base::RefCounted
{
public:
    explicit IDisplayServices(dom::Document &document) : mDocument(&document) {}
    base::Ref<IHTMLCaret> GetCaret() const;

private:
    base::Ref<dom::Document> mDocument;
};

} // namespace platform
