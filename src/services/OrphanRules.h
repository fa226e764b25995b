// SPDX-License-Identifier: MIT
#pragma once

#include "models/LeftoverCategory.h"
#include "models/OrphanConfidence.h"
#include "models/OrphanedAppGroup.h"

#include <QList>
#include <QString>

#include <optional>

// The name and grade rules of the removed-app scan that need no file system. Internal to the scanner;
// exposed only so tests and the benchmark can reach them.
namespace OrphanRules {

// Two or more dot-separated parts of ASCII letters, digits and hyphens, at least 5 characters.
[[nodiscard]] bool isLikelyBundleID(const QString &text);
// Entries of the system, of widely shared vendor folders, or of this program itself.
[[nodiscard]] bool isSystemArtifact(const std::optional<QString> &bundleID, const QString &name);
[[nodiscard]] bool isExcludedFolderName(const QString &lowerCasedName);
[[nodiscard]] std::optional<QString> extractBundleIDFromGroupContainer(const QString &name);
// Lower-cased with everything but a-z and 0-9 removed.
[[nodiscard]] QString normalizedName(const QString &name);
// The last dot-separated part of a preference file's identifier as a lower-cased name, when it is
// long enough to stand for the app.
[[nodiscard]] std::optional<QString> nameFromIdentifierTail(const QString &bundleID);
// A group marks a background component of another app (helper, updater, daemon, …).
[[nodiscard]] bool looksLikeComponent(const std::optional<QString> &bundleID, const QString &nameOrKey);
// Absent means the evidence is too weak and the group is dropped.
[[nodiscard]] std::optional<OrphanConfidence> evaluateConfidence(bool hasBundleID, const QList<LeftoverCategory> &categories);
[[nodiscard]] QString evidenceSummary(OrphanConfidence confidence, const QList<LeftoverCategory> &categories);
// The name shown when neither the leftovers nor a preference file supply one.
[[nodiscard]] QString displayNameFromKey(const QString &key);
// Grade, then total size descending, then display name; stable.
void sortGroups(QList<OrphanedAppGroup> &groups);

} // namespace OrphanRules

namespace OrphanedLeftoverScannerService {

// The blocking scan. literalReading re-reads a preference file for every question asked of it, as a
// reference for tests and the benchmark; the result must be the same either way.
[[nodiscard]] QList<OrphanedAppGroup> performScan(bool literalReading = false);

} // namespace OrphanedLeftoverScannerService
