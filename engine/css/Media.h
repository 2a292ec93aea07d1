// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/Tokenizer.h"

#include <QSizeF>

namespace css {

/// What the page is shown on.
struct Medium
{
    QString type = QStringLiteral("screen"); ///< "screen" or "print"
    QSizeF viewport{1000, 800};              ///< CSS pixels
    friend bool operator==(const Medium &, const Medium &) = default;
};

/// A list of media and what they must be like. An empty one suits every medium.
class MediaList
{
public:
    static MediaList parse(const QString &text);
    static MediaList parse(const Tokens &tokens, size_t from, size_t to, const QString &text);
    bool suits(const Medium &medium) const;
    /// Whether the answer may change with the viewport.
    bool asksForSize() const;
    bool isEmpty() const { return mQueries.empty(); }

private:
    struct Feature
    {
        enum class Kind : uint8_t { Width, Height, AspectRatio, Portrait, Landscape, True, False };
        enum class Compare : uint8_t { Equal, Least, Most };
        Kind kind = Kind::False;
        Compare compare = Compare::Equal;
        double value = 0;
    };
    struct Query
    {
        bool negated = false;
        QString type; ///< empty: all
        std::vector<Feature> features;
    };
    static bool readQuery(const Tokens &tokens, size_t from, size_t to, Query &query);
    static Feature readFeature(const Tokens &tokens, size_t from, size_t to);
    static bool holds(const Feature &feature, const Medium &medium);
    std::vector<Query> mQueries;
};

} // namespace css
