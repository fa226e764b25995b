// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

// PropertyListSerialization on libplist, XML and binary. libplist recurses once per nesting level and
// trusts binary offsets, so every input is checked first: over 16 MiB, nested deeper than 64, or
// structurally broken counts as unreadable and is never handed to the parser.
//
// Values arrive as QVariant: a dictionary as QVariantMap, an array as QVariantList, a string as QString,
// an integer as qint64, a real as double, a Boolean as bool, a date as QDateTime, data as QByteArray.
namespace PropertyList {

inline constexpr qint64 maximumBytes = 16 * 1024 * 1024;
inline constexpr int maximumDepth = 64;

[[nodiscard]] std::optional<QVariant> fromData(const QByteArray &data);
[[nodiscard]] std::optional<QVariant> read(const QString &path);
// A top-level dictionary, or absent when the file is unreadable or holds anything else.
[[nodiscard]] std::optional<QVariantMap> readDictionary(const QString &path);

} // namespace PropertyList
