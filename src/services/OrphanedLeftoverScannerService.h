// SPDX-License-Identifier: MIT
#pragma once

#include "models/OrphanedAppGroup.h"

#include <QFuture>
#include <QList>

// Finds leftovers of apps that are no longer installed, grouped by app and graded.
namespace OrphanedLeftoverScannerService {

// Runs the whole scan on the global thread pool; groups ordered by grade, size, then name.
[[nodiscard]] QFuture<QList<OrphanedAppGroup>> scan();

} // namespace OrphanedLeftoverScannerService
