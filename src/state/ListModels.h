// SPDX-License-Identifier: MIT
#pragma once

#include "models/InstalledApp.h"
#include "models/LeftoverItem.h"
#include "models/OrphanedAppGroup.h"

#include <QAbstractListModel>
#include <QList>
#include <QSet>
#include <QtQml/qqmlregistration.h>

// The view model owns these and refills them; a refill with equal rows sends no reset, so a view keeps
// its scroll position and current row across unrelated state changes.

class InstalledAppListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by AppViewModel")
    Q_PROPERTY(int count READ rowCount NOTIFY countChanged)
public:
    enum class Role { id = Qt::UserRole + 1, name, path, bundleIdentifier, size, formattedSize };

    explicit InstalledAppListModel(QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QList<InstalledApp> &records() const { return m_records; }
    void setRecords(const QList<InstalledApp> &records);

Q_SIGNALS:
    void countChanged();

private:
    QList<InstalledApp> m_records;
};

class OrphanGroupListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by AppViewModel")
    Q_PROPERTY(int count READ rowCount NOTIFY countChanged)
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

    [[nodiscard]] int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QList<OrphanedAppGroup> &records() const { return m_records; }
    void setRecords(const QList<OrphanedAppGroup> &records);

Q_SIGNALS:
    void countChanged();

private:
    QList<OrphanedAppGroup> m_records;
};

// Items of a result with their tick: the detail pane sections them by `category`.
class LeftoverItemListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by AppViewModel")
    Q_PROPERTY(int count READ rowCount NOTIFY countChanged)
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
    };

    explicit LeftoverItemListModel(QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QList<LeftoverItem> &records() const { return m_records; }
    void setRecords(const QList<LeftoverItem> &records, const QSet<QString> &selectedIDs);

Q_SIGNALS:
    void countChanged();

private:
    QList<LeftoverItem> m_records;
    QSet<QString> m_selectedIDs;
};
