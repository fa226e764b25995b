// SPDX-License-Identifier: MIT
#pragma once

#include "models/DeletionReport.h"

#include <QList>

// Moves items to the Trash, never deleting anything outright, and reports every item.
namespace DeletionService {

// Blocking: call it off the main thread. Deepest paths first; a failure never stops the run.
[[nodiscard]] DeletionReport moveToTrash(const QList<LeftoverItem> &items);

// The order in which moveToTrash tries the items: longest path (in user-perceived characters) first,
// equal lengths in the given order. A dry run shows this order too.
[[nodiscard]] QList<LeftoverItem> processingOrder(const QList<LeftoverItem> &items);

} // namespace DeletionService
