// SPDX-License-Identifier: MIT
#pragma once

#include "models/LeftoverItem.h"

#include <QList>
#include <QPair>
#include <QStringList>

// What one Trash run achieved: every item is in exactly one of the two lists.
struct DeletionReport {
    QList<LeftoverItem> deleted;
    // Each failed item with the platform's own error text.
    QList<QPair<LeftoverItem, QString>> failed;
    // Where each deleted item now is in the Trash, in the same order; empty where that is not known.
    QStringList trashedPaths;

    friend bool operator==(const DeletionReport &, const DeletionReport &) = default;
};

// One item of an earlier Trash run and where the run put it.
struct TrashedItem {
    LeftoverItem item;
    QString trashedPath;

    friend bool operator==(const TrashedItem &, const TrashedItem &) = default;
};

// What putting a Trash run back achieved: every item is in exactly one of the two lists.
struct RestoreReport {
    QList<LeftoverItem> restored;
    // Each item left in the Trash, with the reason.
    QList<QPair<LeftoverItem, QString>> failed;

    friend bool operator==(const RestoreReport &, const RestoreReport &) = default;
};
