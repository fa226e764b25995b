// SPDX-License-Identifier: MIT
#include "services/OrphanedLeftoverScannerService.h"

#include <QtConcurrent>

namespace OrphanedLeftoverScannerService {

QFuture<QList<OrphanedAppGroup>> scan()
{
    return QtConcurrent::run([] { return QList<OrphanedAppGroup>(); });
}

} // namespace OrphanedLeftoverScannerService
