// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <vector>

namespace layout {

/// Where a line may end in a text. Latin text follows the browsers' own, stricter reading of the Unicode rules: no break
/// behind a slash or between a sign and its number; everything else follows Unicode.
class BreakFinder
{
public:
    /// EveryBlank: blanks stay in the line that they stand in, and it may end behind each of them.
    enum class Words : uint8_t { Normal, BreakAll, KeepAll, EveryBlank };
    explicit BreakFinder(const QString &text);
    /// Whether a line may end in front of the 0-based unit `at`. Blanks hang: they belong to the word in front.
    bool allowed(uint32_t at, Words words = Words::Normal) const;
    /// Whether the place is between two characters as a reader sees them.
    bool isCharacterStart(uint32_t at) const;

private:
    const QString &mText;
    mutable std::vector<uint8_t> mUnicode; // filled at the first character that isn't Latin
    void analyse() const;
};

} // namespace layout
