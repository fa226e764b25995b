// SPDX-License-Identifier: MIT
#include "models/OrphanedAppGroup.h"
#include "platform/ByteCountFormatter.h"

qint64 OrphanedAppGroup::totalSize() const
{
    return scanResult().totalSize();
}

QString OrphanedAppGroup::formattedTotalSize() const
{
    return ByteCountFormatter::string(totalSize());
}

size_t qHash(const OrphanedAppGroup &group, size_t seed)
{
    seed = qHashMulti(seed, group.id, group.displayName, group.bundleIdentifier.has_value());
    if (group.bundleIdentifier)
        seed = qHash(*group.bundleIdentifier, seed);
    seed = qHashMulti(seed, OrphanConfidences::rawValue(group.confidence), group.evidenceSummary, group.items.size());
    for (const LeftoverItem &item : group.items)
        seed = qHash(item, seed);
    return seed;
}
