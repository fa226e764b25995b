// SPDX-License-Identifier: MIT
#include "state/ListModels.h"

#include "models/RecordFields.h"

#include <algorithm>

namespace {

template<typename Record>
QHash<int, QByteArray> fieldRoleNames(int firstRole)
{
    QHash<int, QByteArray> names;
    const QList<RecordField<Record>> &fields = RecordFields::inWindow<Record>();
    for (qsizetype i = 0; i < fields.size(); ++i)
        names.insert(firstRole + int(i), fields.at(i).name);
    return names;
}

template<typename Record>
QVariant fieldRoleValue(const Record &record, int role, int firstRole)
{
    const QList<RecordField<Record>> &fields = RecordFields::inWindow<Record>();
    const int field = role - firstRole;
    if (field < 0 || field >= fields.size())
        return {};
    return RecordFields::windowValue(fields.at(field), record);
}

constexpr int firstRecordRole = Qt::UserRole + 1;

} // namespace

InstalledAppListModel::InstalledAppListModel(QObject *parent) : RecordListModel(parent) {}

QVariant InstalledAppListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    return fieldRoleValue(m_records.at(index.row()), role, firstRecordRole);
}

QHash<int, QByteArray> InstalledAppListModel::roleNames() const
{
    return fieldRoleNames<InstalledApp>(firstRecordRole);
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
    return fieldRoleValue(m_records.at(index.row()), role, firstRecordRole);
}

QHash<int, QByteArray> OrphanGroupListModel::roleNames() const
{
    return fieldRoleNames<OrphanedAppGroup>(firstRecordRole);
}

namespace {

// Whether two group lists show the same rows. Comparing every item of thousands of groups (each with a
// URL) after a rescan stalled the window; a row shows only the fields the window shows.
bool sameRows(const QList<OrphanedAppGroup> &a, const QList<OrphanedAppGroup> &b)
{
    const QList<RecordField<OrphanedAppGroup>> &fields = RecordFields::inWindow<OrphanedAppGroup>();
    return std::equal(a.cbegin(), a.cend(), b.cbegin(), b.cend(), [&fields](const OrphanedAppGroup &x, const OrphanedAppGroup &y) {
        return std::all_of(fields.cbegin(), fields.cend(),
                           [&](const RecordField<OrphanedAppGroup> &field) { return field.value(x) == field.value(y); });
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

const LeftoverItemListModel::Section &LeftoverItemListModel::sectionOf(int row) const
{
    // The last section that starts at or before the row.
    const auto after = std::upper_bound(m_sections.cbegin(), m_sections.cend(), row,
                                        [](int r, const Section &section) { return r < section.firstRow; });
    return *std::prev(after);
}

QVariant LeftoverItemListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const LeftoverItem &item = m_records.at(index.row());
    switch (Role(role)) {
    case Role::isSelected: return m_selectedIDs.contains(item.id);
    case Role::opensSection: return sectionOf(index.row()).firstRow == index.row();
    case Role::sectionSummary: {
        const Section &section = sectionOf(index.row());
        return LeftoverItems::countAndSize(section.rowCount, section.size);
    }
    case Role::sectionAllSelected: {
        const Section &section = sectionOf(index.row());
        return section.selectedCount == section.rowCount;
    }
    case Role::firstField: break;
    }
    return fieldRoleValue(item, role, int(Role::firstField));
}

QHash<int, QByteArray> LeftoverItemListModel::roleNames() const
{
    QHash<int, QByteArray> names = fieldRoleNames<LeftoverItem>(int(Role::firstField));
    names.insert(int(Role::isSelected), "isSelected");
    names.insert(int(Role::opensSection), "opensSection");
    names.insert(int(Role::sectionSummary), "sectionSummary");
    names.insert(int(Role::sectionAllSelected), "sectionAllSelected");
    return names;
}

void LeftoverItemListModel::countSections()
{
    m_sections.clear();
    for (int row = 0; row < m_records.size(); ++row) {
        const LeftoverItem &item = m_records.at(row);
        if (row == 0 || m_records.at(row - 1).category != item.category)
            m_sections.append(Section{row, 0, 0, 0});
        Section &section = m_sections.last();
        ++section.rowCount;
        section.selectedCount += m_selectedIDs.contains(item.id) ? 1 : 0;
        section.size += item.size;
    }
}

void LeftoverItemListModel::setRecords(const QList<LeftoverItem> &records, const QSet<QString> &selectedIDs)
{
    QList<LeftoverItem> ordered = records;
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const LeftoverItem &a, const LeftoverItem &b) { return int(a.category) < int(b.category); });
    if (m_records != ordered) {
        resetRows([&] {
            m_records = std::move(ordered);
            m_selectedIDs = selectedIDs;
            countSections();
        });
        return;
    }
    const QSet<QString> previous = std::exchange(m_selectedIDs, selectedIDs);
    const QList<Section> previousSections = std::exchange(m_sections, {});
    countSections();
    // A tick only changes a row's box and its category's header; a reset would scroll the view away.
    for (int row = 0; row < m_records.size(); ++row) {
        const QString &id = m_records.at(row).id;
        if (previous.contains(id) != m_selectedIDs.contains(id)) {
            const QModelIndex changed = index(row);
            Q_EMIT dataChanged(changed, changed, {int(Role::isSelected)});
        }
    }
    for (qsizetype i = 0; i < m_sections.size(); ++i) {
        const Section &section = m_sections.at(i);
        const bool wasAll = previousSections.at(i).selectedCount == section.rowCount;
        if (wasAll != (section.selectedCount == section.rowCount)) {
            Q_EMIT dataChanged(index(section.firstRow), index(section.firstRow + section.rowCount - 1),
                               {int(Role::sectionAllSelected)});
        }
    }
}
