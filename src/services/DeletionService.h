// SPDX-License-Identifier: MIT
#pragma once

#include "models/DeletionReport.h"

#include <QList>

// Moves items to the Trash, never deleting anything outright, and reports every item.
namespace DeletionService {

// Blocking: call it off the main thread. Deepest paths first; a failure never stops the run.
[[nodiscard]] DeletionReport moveToTrash(const QList<LeftoverItem> &items);

// Blocking: puts each item back where it was, folders before what they held, and only where nothing
// else has taken its place. A failure never stops the run.
[[nodiscard]] RestoreReport putBack(const QList<TrashedItem> &items);

// The items a report moved, each with where it went.
[[nodiscard]] QList<TrashedItem> trashedItems(const DeletionReport &report);

// The order in which moveToTrash tries the items: longest path (in user-perceived characters) first,
// equal lengths in the given order. A dry run shows this order too.
[[nodiscard]] QList<LeftoverItem> processingOrder(const QList<LeftoverItem> &items);

} // namespace DeletionService
