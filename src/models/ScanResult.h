// SPDX-License-Identifier: MIT
#pragma once

#include "models/LeftoverItem.h"

#include <QList>

struct ScanResult {
    QList<LeftoverItem> items;

    [[nodiscard]] qint64 totalSize() const;
    [[nodiscard]] QString formattedTotalSize() const;
    // The category's items in list order.
    [[nodiscard]] QList<LeftoverItem> itemsFor(LeftoverCategory category) const;

    friend bool operator==(const ScanResult &, const ScanResult &) = default;
};
