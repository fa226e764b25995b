// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

// File names on Linux are bytes, not text. Qt's own conversion (QFile::decodeName) replaces bytes that
// are not UTF-8 with U+FFFD for good, after which the file can no longer be opened, sized or trashed; KDE
// met the same wall in KIO (https://phabricator.kde.org/D18161). These two functions round-trip
// every byte string: each invalid byte becomes a lone surrogate U+DC80..U+DCFF and back, as Python's
// "surrogateescape" does.
namespace NativePath {

[[nodiscard]] QString decode(const char *bytes, qsizetype length);
[[nodiscard]] inline QString decode(const QByteArray &bytes) { return decode(bytes.constData(), bytes.size()); }
[[nodiscard]] QByteArray encode(const QString &path);

} // namespace NativePath
