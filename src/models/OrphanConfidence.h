// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// How sure the removed-app scan is that a group belongs to an app that is gone.
enum class OrphanConfidence { high, medium, uncertain };

namespace OrphanConfidences {

[[nodiscard]] QString rawValue(OrphanConfidence confidence);
// "high", "medium" or "uncertain": the window's theme picks the grade's colours by it.
[[nodiscard]] QString key(OrphanConfidence confidence);
// The sidebar row's tag: "High", "Med" or "Low".
[[nodiscard]] QString shortLabel(OrphanConfidence confidence);
[[nodiscard]] constexpr int sortOrder(OrphanConfidence confidence) { return int(confidence); }

} // namespace OrphanConfidences
