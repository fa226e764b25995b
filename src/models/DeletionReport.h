// SPDX-License-Identifier: MIT
#pragma once

#include "models/LeftoverItem.h"

#include <QList>
#include <QPair>

// What one Trash run achieved: every item is in exactly one of the two lists.
struct DeletionReport {
    QList<LeftoverItem> deleted;
    // Each failed item with the platform's own error text.
    QList<QPair<LeftoverItem, QString>> failed;

    friend bool operator==(const DeletionReport &, const DeletionReport &) = default;
};
