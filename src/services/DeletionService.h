// SPDX-License-Identifier: MIT
#pragma once

#include "models/DeletionReport.h"

#include <QList>

// Moves items to the Trash, never deleting anything outright, and reports every item.
namespace DeletionService {

// Blocking: call it off the main thread. Deepest paths first; a failure never stops the run.
[[nodiscard]] DeletionReport moveToTrash(const QList<LeftoverItem> &items);

} // namespace DeletionService
