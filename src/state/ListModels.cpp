// SPDX-License-Identifier: MIT
#include "state/ListModels.h"

#include "models/LeftoverCategory.h"
#include "models/OrphanConfidence.h"
#include "platform/ByteCountFormatter.h"

namespace {

template<typename Role>
int roleOf(Role role)
{
    return int(role);
}

} // namespace

InstalledAppListModel::InstalledAppListModel(QObject *parent) : RecordListModel(parent) {}

QVariant InstalledAppListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const InstalledApp &app = m_records.at(index.row());
    switch (Role(role)) {
    case Role::id: return app.id;
    case Role::name: return app.name;
    case Role::path: return app.path;
    case Role::bundleIdentifier: return app.bundleIdentifier.value_or(QString());
    case Role::size: return app.size;
    case Role::formattedSize: return app.formattedSize();
    }
    return {};
}

QHash<int, QByteArray> InstalledAppListModel::roleNames() const
{
    return {{roleOf(Role::id), "id"},
            {roleOf(Role::name), "name"},
            {roleOf(Role::path), "path"},
            {roleOf(Role::bundleIdentifier), "bundleIdentifier"},
            {roleOf(Role::size), "size"},
            {roleOf(Role::formattedSize), "formattedSize"}};
}

void InstalledAppListModel::setRecords(const QList<InstalledApp> &records)
{
    if (m_records != records)
        resetRows([&] { m_records = records; });
}

OrphanGroupListModel::OrphanGroupListModel(QObject *parent) : RecordListModel(parent) {}

QVariant OrphanGroupListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const OrphanedAppGroup &group = m_records.at(index.row());
    switch (Role(role)) {
    case Role::id: return group.id;
    case Role::displayName: return group.displayName;
    case Role::bundleIdentifier: return group.bundleIdentifier.value_or(QString());
    case Role::confidence: return OrphanConfidences::rawValue(group.confidence);
    case Role::evidenceSummary: return group.evidenceSummary;
    case Role::itemCount: return int(group.items.size());
    case Role::size: return group.totalSize();
    case Role::formattedSize: return group.formattedTotalSize();
    }
    return {};
}

QHash<int, QByteArray> OrphanGroupListModel::roleNames() const
{
    return {{roleOf(Role::id), "id"},
            {roleOf(Role::displayName), "displayName"},
            {roleOf(Role::bundleIdentifier), "bundleIdentifier"},
            {roleOf(Role::confidence), "confidence"},
            {roleOf(Role::evidenceSummary), "evidenceSummary"},
            {roleOf(Role::itemCount), "itemCount"},
            {roleOf(Role::size), "size"},
            {roleOf(Role::formattedSize), "formattedSize"}};
}

namespace {

// Whether two group lists show the same rows. Comparing every item of thousands of groups (each with a
// URL) after a rescan stalled the window; a row shows only these fields.
bool sameRows(const QList<OrphanedAppGroup> &a, const QList<OrphanedAppGroup> &b)
{
    return std::equal(a.cbegin(), a.cend(), b.cbegin(), b.cend(), [](const OrphanedAppGroup &x, const OrphanedAppGroup &y) {
        return x.id == y.id && x.displayName == y.displayName && x.bundleIdentifier == y.bundleIdentifier
            && x.confidence == y.confidence && x.evidenceSummary == y.evidenceSummary
            && x.items.size() == y.items.size() && x.totalSize() == y.totalSize();
    });
}

} // namespace

void OrphanGroupListModel::setRecords(const QList<OrphanedAppGroup> &records)
{
    if (!sameRows(m_records, records))
        resetRows([&] { m_records = records; });
    else
        m_records = records; // same rows on screen; keep the newer records without a reset
}

LeftoverItemListModel::LeftoverItemListModel(QObject *parent) : RecordListModel(parent) {}

QVariant LeftoverItemListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const LeftoverItem &item = m_records.at(index.row());
    switch (Role(role)) {
    case Role::id: return item.id;
    case Role::name: return item.name();
    case Role::path: return item.path();
    case Role::category: return LeftoverCategories::rawValue(item.category);
    case Role::size: return item.size;
    case Role::formattedSize: return item.formattedSize();
    case Role::requiresAdmin: return item.requiresAdmin();
    case Role::isSelected: return m_selectedIDs.contains(item.id);
    case Role::foundBy: return FoundByValues::rawValue(item.foundBy);
    case Role::matched: return item.matched.value_or(QString());
    case Role::owner: return item.claimedBy ? item.claimedBy->label() : QString();
    case Role::howFound: return item.howFound();
    }
    return {};
}

QHash<int, QByteArray> LeftoverItemListModel::roleNames() const
{
    return {{roleOf(Role::id), "id"},
            {roleOf(Role::name), "name"},
            {roleOf(Role::path), "path"},
            {roleOf(Role::category), "category"},
            {roleOf(Role::size), "size"},
            {roleOf(Role::formattedSize), "formattedSize"},
            {roleOf(Role::requiresAdmin), "requiresAdmin"},
            {roleOf(Role::isSelected), "isSelected"},
            {roleOf(Role::foundBy), "foundBy"},
            {roleOf(Role::matched), "matched"},
            {roleOf(Role::owner), "owner"},
            {roleOf(Role::howFound), "howFound"}};
}

void LeftoverItemListModel::setRecords(const QList<LeftoverItem> &records, const QSet<QString> &selectedIDs)
{
    if (m_records != records) {
        resetRows([&] {
            m_records = records;
            m_selectedIDs = selectedIDs;
        });
        return;
    }
    const QSet<QString> previous = std::exchange(m_selectedIDs, selectedIDs);
    // A tick only changes one role; a reset would close the view's sections.
    for (int row = 0; row < m_records.size(); ++row) {
        const QString &id = m_records.at(row).id;
        if (previous.contains(id) != m_selectedIDs.contains(id)) {
            const QModelIndex changed = index(row);
            Q_EMIT dataChanged(changed, changed, {roleOf(Role::isSelected)});
        }
    }
}

CategorySectionListModel::CategorySectionListModel(QObject *parent) : RecordListModel(parent) {}

QVariant CategorySectionListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Section &section = m_sections.at(index.row());
    switch (Role(role)) {
    case Role::category: return LeftoverCategories::rawValue(section.category);
    case Role::systemLevel: return LeftoverCategories::systemLevel(section.category);
    case Role::itemCount: return section.itemCount;
    case Role::selectedCount: return section.selectedCount;
    case Role::size: return section.size;
    case Role::formattedSize: return ByteCountFormatter::string(section.size);
    }
    return {};
}

QHash<int, QByteArray> CategorySectionListModel::roleNames() const
{
    return {{roleOf(Role::category), "category"},
            {roleOf(Role::systemLevel), "systemLevel"},
            {roleOf(Role::itemCount), "itemCount"},
            {roleOf(Role::selectedCount), "selectedCount"},
            {roleOf(Role::size), "size"},
            {roleOf(Role::formattedSize), "formattedSize"}};
}

QVariantMap CategorySectionListModel::section(const QString &categoryRawValue) const
{
    for (int row = 0; row < m_sections.size(); ++row) {
        const Section &section = m_sections.at(row);
        if (LeftoverCategories::rawValue(section.category) != categoryRawValue)
            continue;
        return {{QStringLiteral("index"), row},
                {QStringLiteral("category"), categoryRawValue},
                {QStringLiteral("systemLevel"), LeftoverCategories::systemLevel(section.category)},
                {QStringLiteral("itemCount"), section.itemCount},
                {QStringLiteral("selectedCount"), section.selectedCount},
                {QStringLiteral("size"), section.size},
                {QStringLiteral("formattedSize"), ByteCountFormatter::string(section.size)}};
    }
    return {};
}

void CategorySectionListModel::setSections(const QList<Section> &sections)
{
    const auto sameCategories = [&] {
        return std::equal(m_sections.cbegin(), m_sections.cend(), sections.cbegin(), sections.cend(),
                          [](const Section &a, const Section &b) { return a.category == b.category; });
    };
    if (!sameCategories()) {
        resetRows([&] { m_sections = sections; });
        return;
    }
    for (int row = 0; row < sections.size(); ++row) {
        if (m_sections.at(row) == sections.at(row))
            continue;
        m_sections[row] = sections.at(row);
        Q_EMIT dataChanged(index(row), index(row));
    }
}
