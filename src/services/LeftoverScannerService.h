// SPDX-License-Identifier: MIT
#pragma once

#include "models/InstalledApp.h"
#include "models/ScanResult.h"

#include <QFuture>

// Finds what belongs to one installed app: its bundle and every related file in the Library folders.
namespace LeftoverScannerService {

// Runs the whole scan on the global thread pool; never fails, possibly empty.
[[nodiscard]] QFuture<ScanResult> scan(const InstalledApp &app);

} // namespace LeftoverScannerService
