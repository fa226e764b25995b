// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// The one comparison behind every sort of names and paths, so that the window, the command line and the
// tests agree on one order; and the one count of characters behind every length rule.
namespace TextCompare {

// Negative, zero or positive, as a is ordered before, the same as, or after b.
[[nodiscard]] int localizedCaseInsensitiveCompare(const QString &a, const QString &b);
// True exactly when a compares ordered ascending before b.
[[nodiscard]] inline bool localizedCaseInsensitiveLess(const QString &a, const QString &b)
{
    return localizedCaseInsensitiveCompare(a, b) < 0;
}

// Characters as a reader counts them (grapheme clusters), so a decomposed "é" is one, not two UTF-16 units.
[[nodiscard]] qsizetype characterCount(const QString &text);

} // namespace TextCompare
