// SPDX-License-Identifier: MIT
#include "services/DeletionService.h"

namespace DeletionService {

DeletionReport moveToTrash(const QList<LeftoverItem> &items)
{
    DeletionReport report;
    for (const LeftoverItem &item : items)
        report.failed.append({item, QStringLiteral("Moving to the Trash is not available yet.")});
    return report;
}

} // namespace DeletionService
