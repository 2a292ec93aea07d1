// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/SelectionObject.h"

#include <QString>
#include <optional>
#include <vector>

namespace ranges {

/// HTML with the selection drawn in it: `^` is the anchor and `|` the focus (alone: a caret), `<!--^-->` and `<!--|-->`
/// between the children of tables and lists, where text can't stand; the attribute `data-selected` on objects selects
/// them. `&#94;` and `&#124;` are the characters themselves. Inside of tags and of SCRIPT and STYLE nothing is a mark.
class Marks
{
public:
    /// Reads the content of a BODY.
    explicit Marks(const QString &marked);
    /// The content without marks.
    const QString &html() const { return mHtml; }
    /// What to load: `html()` as a whole document, `<HTML><HEAD></HEAD><BODY>…</BODY></HTML>`.
    QString page() const { return wrapped(mHtml); }
    static QString wrapped(const QString &bodyContent);
    /// Sets the selection in a document that was loaded from `page()` and not altered since. Without marks the
    /// selection is cleared. False if the marks' places aren't there.
    bool apply(SelectionObject &selection) const;

    /// The elements that `data-selected` names, in a document that was loaded from `page()`.
    std::vector<Ref<dom::Element>> selected(const dom::Document &document) const;
    /// Cells and areas: they are selected beside the text, not as objects, and `apply` leaves them to the surface.
    static bool isSelectedBesideText(const dom::Element &element);

    /// The BODY's content with the selection drawn, and what is selected beside it; CR LF as in `innerHTML`. Marks
    /// outside of BODY aren't shown.
    static QString print(const SelectionObject &selection, const std::vector<Ref<dom::Element>> &besideText = {});

private:
    struct Place
    {
        std::vector<uint32_t> path; ///< child indexes from BODY
        uint32_t offset = 0;
    };
    void locate(const QString &withPlaceholders);
    static Position find(const dom::Document &document, const Place &place);
    QString mHtml;
    std::optional<Place> mAnchor;
    std::optional<Place> mFocus;
    std::vector<Place> mSelected;
};

} // namespace ranges
