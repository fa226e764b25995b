// SPDX-License-Identifier: MIT
#pragma once

#include "models/LeftoverItem.h"
#include "models/OrphanConfidence.h"
#include "models/ScanResult.h"

#include <QList>

#include <optional>

// The leftovers of one app that is no longer installed.
struct OrphanedAppGroup {
    QString id;
    QString displayName;
    std::optional<QString> bundleIdentifier;
    OrphanConfidence confidence = OrphanConfidence::uncertain;
    QString evidenceSummary;
    QList<LeftoverItem> items;

    [[nodiscard]] qint64 totalSize() const;
    [[nodiscard]] QString formattedTotalSize() const;
    // Lets the detail view and the deletion flow treat a group like an installed app's scan.
    [[nodiscard]] ScanResult scanResult() const { return ScanResult{items}; }

    friend bool operator==(const OrphanedAppGroup &, const OrphanedAppGroup &) = default;
};

size_t qHash(const OrphanedAppGroup &group, size_t seed = 0);
