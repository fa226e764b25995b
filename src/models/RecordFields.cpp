// SPDX-License-Identifier: MIT
#include "models/RecordFields.h"

#include "models/LeftoverCategory.h"
#include "models/OrphanConfidence.h"

#include <QJsonArray>
#include <QStringList>

namespace {

QVariant orNull(const std::optional<QString> &value)
{
    return value ? QVariant(*value) : QVariant();
}

} // namespace

namespace RecordFields {

template<>
const QList<RecordField<InstalledApp>> &all<InstalledApp>()
{
    using F = RecordField<InstalledApp>;
    static const QList<F> fields{
        {"id", [](const InstalledApp &app) { return QVariant(app.id); }},
        {"name", [](const InstalledApp &app) { return QVariant(app.name); }},
        {"path", [](const InstalledApp &app) { return QVariant(app.bundlePath()); }},
        {"bundleIdentifier", [](const InstalledApp &app) { return orNull(app.bundleIdentifier); }},
        {"size", [](const InstalledApp &app) { return QVariant(app.size); }},
        {"formattedSize", [](const InstalledApp &app) { return QVariant(app.formattedSize()); }},
    };
    return fields;
}

template<>
const QList<RecordField<ItemOwner>> &all<ItemOwner>()
{
    using F = RecordField<ItemOwner>;
    static const QList<F> fields{
        {"name", [](const ItemOwner &owner) { return QVariant(owner.name); }},
        {"bundleIdentifier", [](const ItemOwner &owner) { return orNull(owner.bundleIdentifier); }},
        {"reason", [](const ItemOwner &owner) { return QVariant(owner.reason); }},
    };
    return fields;
}

template<>
const QList<RecordField<LeftoverItem>> &all<LeftoverItem>()
{
    using F = RecordField<LeftoverItem>;
    static const QList<F> fields{
        {"id", [](const LeftoverItem &item) { return QVariant(item.id); }},
        {"path", [](const LeftoverItem &item) { return QVariant(item.path()); }},
        {"name", [](const LeftoverItem &item) { return QVariant(item.name()); }},
        {"category", [](const LeftoverItem &item) { return QVariant(LeftoverCategories::rawValue(item.category)); }},
        {"size", [](const LeftoverItem &item) { return QVariant(item.size); }},
        {"formattedSize", [](const LeftoverItem &item) { return QVariant(item.formattedSize()); }},
        {"requiresAdmin", [](const LeftoverItem &item) { return QVariant(item.requiresAdmin()); }},
        {"foundBy", [](const LeftoverItem &item) { return QVariant(FoundByValues::rawValue(item.foundBy)); }},
        {"matched", [](const LeftoverItem &item) { return orNull(item.matched); }},
        {"claimedBy",
         [](const LeftoverItem &item) { return item.claimedBy ? QVariant(json(*item.claimedBy)) : QVariant(); },
         F::Shown::inJson},
        // Whether a finished scan ticks it; the window shows the current tick instead.
        {"selected", [](const LeftoverItem &item) { return QVariant(item.isSelectedByDefault()); }, F::Shown::inJson},
        // "Belongs to ForkLift" or "Part of macOS"; empty for the scanned app's own items.
        {"owner", [](const LeftoverItem &item) { return QVariant(item.claimedBy ? item.claimedBy->label() : QString()); },
         F::Shown::inWindow},
        // How the item was found and, when claimed, why it is another's: the row's tooltip.
        {"howFound", [](const LeftoverItem &item) { return QVariant(item.howFound()); }, F::Shown::inWindow},
        // What a screen reader says for the row: name, size and, when claimed, whose it is.
        {"spokenName",
         [](const LeftoverItem &item) {
             QStringList parts{item.name(), item.formattedSize()};
             if (item.claimedBy)
                 parts.append(item.claimedBy->label());
             return QVariant(parts.join(QStringLiteral(", ")));
         },
         F::Shown::inWindow},
        {"systemLevel", [](const LeftoverItem &item) { return QVariant(LeftoverCategories::systemLevel(item.category)); },
         F::Shown::inWindow},
    };
    return fields;
}

template<>
const QList<RecordField<OrphanedAppGroup>> &all<OrphanedAppGroup>()
{
    using F = RecordField<OrphanedAppGroup>;
    static const QList<F> fields{
        {"id", [](const OrphanedAppGroup &group) { return QVariant(group.id); }},
        {"displayName", [](const OrphanedAppGroup &group) { return QVariant(group.displayName); }},
        {"bundleIdentifier", [](const OrphanedAppGroup &group) { return orNull(group.bundleIdentifier); }},
        {"confidence", [](const OrphanedAppGroup &group) { return QVariant(OrphanConfidences::rawValue(group.confidence)); }},
        {"grade", [](const OrphanedAppGroup &group) { return QVariant(OrphanConfidences::key(group.confidence)); },
         F::Shown::inWindow},
        {"gradeTag", [](const OrphanedAppGroup &group) { return QVariant(OrphanConfidences::shortLabel(group.confidence)); },
         F::Shown::inWindow},
        {"evidenceSummary", [](const OrphanedAppGroup &group) { return QVariant(group.evidenceSummary); }},
        {"itemCount", [](const OrphanedAppGroup &group) { return QVariant(int(group.items.size())); }, F::Shown::inWindow},
        {"totalSize", [](const OrphanedAppGroup &group) { return QVariant(group.totalSize()); }},
        {"formattedTotalSize", [](const OrphanedAppGroup &group) { return QVariant(group.formattedTotalSize()); }},
        {"summary",
         [](const OrphanedAppGroup &group) { return QVariant(LeftoverItems::countAndSize(group.items.size(), group.totalSize())); },
         F::Shown::inWindow},
        {"items",
         [](const OrphanedAppGroup &group) {
             QJsonArray items;
             for (const LeftoverItem &item : group.items)
                 items.append(json(item));
             return QVariant(items);
         },
         F::Shown::inJson},
    };
    return fields;
}

} // namespace RecordFields
