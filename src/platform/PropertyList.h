// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

// Property lists, XML and binary, read with libplist. libplist 2.2 (Debian 12) has no limits of its
// own: it parses one nesting level per recursive call and frees the tree the same way
// (https://github.com/libimobiledevice/libplist/issues/298), parses a binary object again for every
// reference to it, aborts on a NUL character inside a key or string, and looks each new XML key up among
// the dictionary's earlier ones. So every input is checked first: over 16 MiB, nested deeper than 64,
// expanding to more objects or dictionary keys than below, or structurally broken counts as unreadable
// and is never handed to the parser.
//
// Values arrive as QVariant: a dictionary as QVariantMap, an array as QVariantList, a string as QString,
// an integer as qint64, a real as double, a Boolean as bool, a date as QDateTime, data as QByteArray.
namespace PropertyList {

inline constexpr qint64 maximumBytes = 16 * 1024 * 1024;
inline constexpr int maximumDepth = 64;
// Objects a binary list may expand to, each reference counted as the copy libplist makes of it.
inline constexpr quint64 maximumObjects = 2'000'000;
// Keys in one XML dictionary; the reader's time grows with the square of it (0.1 s for 50,000).
inline constexpr qsizetype maximumDictionaryKeys = 50'000;

[[nodiscard]] std::optional<QVariant> fromData(const QByteArray &data);
[[nodiscard]] std::optional<QVariant> read(const QString &path);
// A top-level dictionary, or absent when the file is unreadable or holds anything else.
[[nodiscard]] std::optional<QVariantMap> readDictionary(const QString &path);

} // namespace PropertyList
