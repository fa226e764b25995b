// SPDX-License-Identifier: MIT
#include "models/LeftoverItem.h"
#include "platform/ByteCountFormatter.h"
#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"

QString FoundByValues::rawValue(FoundBy foundBy)
{
    switch (foundBy) {
    case FoundBy::bundle: return QStringLiteral("bundle");
    case FoundBy::knownLocation: return QStringLiteral("known location");
    case FoundBy::folderListing: return QStringLiteral("folder listing");
    case FoundBy::launchItem: return QStringLiteral("launch item");
    case FoundBy::spotlight: return QStringLiteral("Spotlight");
    case FoundBy::nameMatch: return QStringLiteral("name match");
    case FoundBy::embeddedIdentifier: return QStringLiteral("embedded identifier");
    case FoundBy::extraLocation: return QStringLiteral("extra location");
    }
    return QString();
}

QString ItemOwner::label() const
{
    return isSystem() ? QStringLiteral("Part of macOS") : QStringLiteral("Belongs to ") + name;
}

LeftoverItem LeftoverItem::at(const QString &path, LeftoverCategory category, qint64 size)
{
    LeftoverItem item;
    item.id = path;
    item.url = QUrl::fromLocalFile(path);
    item.category = category;
    item.size = size;
    return item;
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

QString LeftoverItem::howFound() const
{
    QString text = QStringLiteral("Found by ") + FoundByValues::rawValue(foundBy);
    if (matched)
        text += QStringLiteral(": ") + *matched;
    if (claimedBy)
        text += QStringLiteral("\n") + claimedBy->label() + QStringLiteral(": ") + claimedBy->reason;
    return text;
}

size_t qHash(const LeftoverItem &item, size_t seed)
{
    seed = qHashMulti(seed, item.id, item.url, LeftoverCategories::rawValue(item.category), item.size,
                      int(item.foundBy), item.matched.value_or(QString()), item.claimedBy.has_value());
    if (item.claimedBy)
        seed = qHashMulti(seed, item.claimedBy->name, item.claimedBy->reason);
    return seed;
}

qint64 LeftoverItems::totalSize(const QList<LeftoverItem> &items)
{
    qint64 total = 0;
    for (const LeftoverItem &item : items)
        total += item.size;
    return total;
}

QString LeftoverItems::countAndSize(qsizetype count, qint64 size)
{
    return QStringLiteral("%1 items • %2").arg(QString::number(count), ByteCountFormatter::string(size));
}
