// SPDX-License-Identifier: MIT
#include "models/LeftoverItem.h"
#include "platform/ByteCountFormatter.h"
#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"

LeftoverItem LeftoverItem::at(const QString &path, LeftoverCategory category, qint64 size)
{
    return LeftoverItem{path, QUrl::fromLocalFile(path), category, size};
}

QString LeftoverItem::name() const
{
    return FileSystem::lastPathComponent(id);
}

QString LeftoverItem::formattedSize() const
{
    return ByteCountFormatter::string(size);
}

bool LeftoverItem::requiresAdmin() const
{
    return LeftoverCategories::systemLevel(category)
        || id.startsWith(FileSystemLayout::rootPrefix() + QLatin1String("/Library"));
}

size_t qHash(const LeftoverItem &item, size_t seed)
{
    return qHashMulti(seed, item.id, item.url, LeftoverCategories::rawValue(item.category), item.size);
}
