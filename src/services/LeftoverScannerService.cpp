// SPDX-License-Identifier: MIT
#include "services/LeftoverScannerService.h"

#include <QtConcurrent>

namespace LeftoverScannerService {

QFuture<ScanResult> scan(const InstalledApp &app)
{
    Q_UNUSED(app)
    return QtConcurrent::run([] { return ScanResult(); });
}

} // namespace LeftoverScannerService
