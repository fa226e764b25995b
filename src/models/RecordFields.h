// SPDX-License-Identifier: MIT
#pragma once

#include "models/InstalledApp.h"
#include "models/LeftoverItem.h"
#include "models/OrphanedAppGroup.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QVariantMap>

#include <optional>

// A record's fields under the names the window and the command line give them, with their values. The
// list models' roles, the window's view of a selected record and the JSON objects are all read from one
// list per record, so a field is named and computed once. An absent value is null in JSON and empty
// text in the window.
template<typename Record>
struct RecordField {
    enum class Shown { everywhere, inWindow, inJson };

    QByteArray name;
    QVariant (*value)(const Record &);
    Shown shown = Shown::everywhere;
};

namespace RecordFields {

// Defined for InstalledApp, ItemOwner, LeftoverItem and OrphanedAppGroup.
template<typename Record>
[[nodiscard]] const QList<RecordField<Record>> &all();
template<> const QList<RecordField<InstalledApp>> &all<InstalledApp>();
template<> const QList<RecordField<ItemOwner>> &all<ItemOwner>();
template<> const QList<RecordField<LeftoverItem>> &all<LeftoverItem>();
template<> const QList<RecordField<OrphanedAppGroup>> &all<OrphanedAppGroup>();

// The fields the window shows, in list order: the list models number their roles after it.
template<typename Record>
[[nodiscard]] const QList<RecordField<Record>> &inWindow()
{
    static const QList<RecordField<Record>> fields = [] {
        QList<RecordField<Record>> shown;
        for (const RecordField<Record> &field : all<Record>()) {
            if (field.shown != RecordField<Record>::Shown::inJson)
                shown.append(field);
        }
        return shown;
    }();
    return fields;
}

template<typename Record>
[[nodiscard]] QVariant windowValue(const RecordField<Record> &field, const Record &record)
{
    const QVariant value = field.value(record);
    return value.isValid() ? value : QVariant(QString());
}

// The window's view of an optional record: every shown field, plus `valid`, false where there is none
// (its fields then hold a default record's values, so bindings never meet undefined).
template<typename Record>
[[nodiscard]] QVariantMap windowMap(const std::optional<Record> &record)
{
    const Record &shown = record ? *record : Record{};
    QVariantMap map{{QStringLiteral("valid"), record.has_value()}};
    for (const RecordField<Record> &field : inWindow<Record>())
        map.insert(QString::fromLatin1(field.name), windowValue(field, shown));
    return map;
}

template<typename Record>
[[nodiscard]] QJsonObject json(const Record &record)
{
    QJsonObject object;
    for (const RecordField<Record> &field : all<Record>()) {
        if (field.shown != RecordField<Record>::Shown::inWindow)
            object.insert(QString::fromLatin1(field.name), QJsonValue::fromVariant(field.value(record)));
    }
    return object;
}

} // namespace RecordFields
