// SPDX-License-Identifier: MIT
#pragma once

#include "models/InstalledApp.h"
#include "models/LeftoverItem.h"
#include "models/OrphanedAppGroup.h"

#include <QAbstractListModel>
#include <QList>
#include <QSet>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

// The view model owns these and refills them; a refill with equal rows sends no reset, so a view keeps
// its scroll position and current row across unrelated state changes.

// What every list of records shares: the row count, the `count` property and the one reset step.
class RecordListModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ rowCount NOTIFY countChanged)
public:
    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int rowCount(const QModelIndex &parent = QModelIndex()) const final
    {
        return parent.isValid() ? 0 : int(recordCount());
    }

Q_SIGNALS:
    void countChanged();

protected:
    [[nodiscard]] virtual qsizetype recordCount() const = 0;

    // Replaces every row inside one reset; `count` is announced only when it changed.
    template<typename Update>
    void resetRows(Update update)
    {
        const qsizetype before = recordCount();
        beginResetModel();
        update();
        endResetModel();
        if (recordCount() != before)
            Q_EMIT countChanged();
    }
};

class InstalledAppListModel : public RecordListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by AppViewModel")
public:
    // One role per field the window shows, named after it.
    explicit InstalledAppListModel(QObject *parent = nullptr);

    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QList<InstalledApp> &records() const { return m_records; }
    void setRecords(const QList<InstalledApp> &records);

private:
    [[nodiscard]] qsizetype recordCount() const override { return m_records.size(); }
    QList<InstalledApp> m_records;
};

class OrphanGroupListModel : public RecordListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by AppViewModel")
public:
    // One role per field the window shows, named after it.
    explicit OrphanGroupListModel(QObject *parent = nullptr);

    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QList<OrphanedAppGroup> &records() const { return m_records; }
    void setRecords(const QList<OrphanedAppGroup> &records);

private:
    [[nodiscard]] qsizetype recordCount() const override { return m_records.size(); }
    QList<OrphanedAppGroup> m_records;
};

// Items of a result with their tick, in display order: by category in declaration order, then in the
// result's order. Each row also carries its category's figures, which the first row of a category shows
// in the category's header.
class LeftoverItemListModel : public RecordListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by AppViewModel")
public:
    // After these, one role per field of the item the window shows, named after it.
    enum class Role {
        isSelected = Qt::UserRole + 1,
        // The first row of its category: it draws the category's header.
        opensSection,
        // "3 items • 2 KB" for the whole category.
        sectionSummary,
        sectionAllSelected,
        firstField,
    };

    explicit LeftoverItemListModel(QObject *parent = nullptr);

    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QList<LeftoverItem> &records() const { return m_records; }
    // Puts the records in display order.
    void setRecords(const QList<LeftoverItem> &records, const QSet<QString> &selectedIDs);

private:
    struct Section {
        int firstRow = 0;
        int rowCount = 0;
        int selectedCount = 0;
        qint64 size = 0;
    };
    [[nodiscard]] qsizetype recordCount() const override { return m_records.size(); }
    [[nodiscard]] const Section &sectionOf(int row) const;
    void countSections();

    QList<LeftoverItem> m_records;
    QSet<QString> m_selectedIDs;
    QList<Section> m_sections; // in row order
};
