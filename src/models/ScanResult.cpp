// SPDX-License-Identifier: MIT
#include "models/ScanResult.h"
#include "platform/ByteCountFormatter.h"

qint64 ScanResult::totalSize() const
{
    return LeftoverItems::totalSize(items);
}

QString ScanResult::formattedTotalSize() const
{
    return ByteCountFormatter::string(totalSize());
}

QList<LeftoverItem> ScanResult::itemsFor(LeftoverCategory category) const
{
    QList<LeftoverItem> matching;
    for (const LeftoverItem &item : items) {
        if (item.category == category)
            matching.append(item);
    }
    return matching;
}
