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
    enum class Role { id = Qt::UserRole + 1, name, path, bundleIdentifier, size, formattedSize };

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
    enum class Role {
        id = Qt::UserRole + 1,
        displayName,
        bundleIdentifier,
        confidence,
        evidenceSummary,
        itemCount,
        size,
        formattedSize,
    };

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
// result's order, so a view can section them by `category`.
class LeftoverItemListModel : public RecordListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by AppViewModel")
public:
    enum class Role {
        id = Qt::UserRole + 1,
        name,
        path,
        category,
        size,
        formattedSize,
        requiresAdmin,
        isSelected,
        foundBy,
        matched,
        // "Belongs to ForkLift" or "Part of macOS"; empty for the scanned app's own items.
        owner,
        // How the item was found and, when claimed, why it is another's: the row's tooltip.
        howFound,
    };

    explicit LeftoverItemListModel(QObject *parent = nullptr);

    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QList<LeftoverItem> &records() const { return m_records; }
    void setRecords(const QList<LeftoverItem> &records, const QSet<QString> &selectedIDs);

private:
    [[nodiscard]] qsizetype recordCount() const override { return m_records.size(); }
    QList<LeftoverItem> m_records;
    QSet<QString> m_selectedIDs;
};

// One row per category that holds items of the active result, for the section headers and their
// select-all boxes.
class CategorySectionListModel : public RecordListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by AppViewModel")
public:
    enum class Role { category = Qt::UserRole + 1, systemLevel, itemCount, selectedCount, size, formattedSize };

    struct Section {
        LeftoverCategory category = LeftoverCategory::other;
        int itemCount = 0;
        int selectedCount = 0;
        qint64 size = 0;

        friend bool operator==(const Section &, const Section &) = default;
    };

    explicit CategorySectionListModel(QObject *parent = nullptr);

    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QList<Section> &sections() const { return m_sections; }
    void setSections(const QList<Section> &sections);

    // A list's section header knows only its title: its row as a map of the role names plus `index`,
    // or an empty map when the category holds no items.
    Q_INVOKABLE [[nodiscard]] QVariantMap section(const QString &categoryRawValue) const;

private:
    [[nodiscard]] qsizetype recordCount() const override { return m_sections.size(); }
    QList<Section> m_sections;
};
