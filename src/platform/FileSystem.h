// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

// The file-system questions the services ask, answered with POSIX calls rather than QFileInfo and QDir:
// paths are QStrings made by NativePath, so names that are not UTF-8 survive the round trip, which
// Qt's own conversion of file names does not allow.
namespace FileSystem {

struct DirectoryEntry {
    QString name;
    QString path;
    // False when the listing itself said the entry is no symbolic link: it existed when listed, and a
    // caller can spare the stat that would only find a dangling link.
    bool mayBeLink = true;
};

// Follows symbolic links, so a dangling link does not exist.
[[nodiscard]] bool exists(const QString &path);
// The same, and whether what the path leads to is a folder.
[[nodiscard]] bool exists(const QString &path, bool *isDirectory);
// True for a symbolic link itself, whether or not its target exists.
[[nodiscard]] bool isSymbolicLink(const QString &path);
// Logical size of the file the path names (following links); absent when it cannot be read.
[[nodiscard]] std::optional<qint64> fileSize(const QString &path);

// The folder's immediate entries, sorted by name. Absent when the folder cannot be listed.
[[nodiscard]] std::optional<QList<DirectoryEntry>> contentsOfDirectory(const QString &folder, bool skipsHiddenFiles = true);

// Reads a whole regular file (through links), refusing files larger than maxBytes and anything else
// (absent then, as on any failure). Never blocks on a pipe or a device.
[[nodiscard]] std::optional<QByteArray> readFile(const QString &path, qint64 maxBytes);

// Path arithmetic on the string alone: nothing here asks the disk, so it serves paths that are gone.
[[nodiscard]] QString lastPathComponent(const QString &path);
[[nodiscard]] QString deletingLastPathComponent(const QString &path);
[[nodiscard]] QString pathExtension(const QString &path);
[[nodiscard]] QString deletingPathExtension(const QString &path);
// The last component without its extension: "Foo" for "/Applications/Foo.app/".
[[nodiscard]] QString fileNameWithoutExtension(const QString &path);
// Absolute (against the working folder) and clean, without a trailing slash.
[[nodiscard]] QString standardizedPath(const QString &path);

// A folder whose extension, in any letter case, marks a package that size walks do not enter.
[[nodiscard]] bool isPackageExtension(QStringView extension);
// The same for a raw file-name byte string, without building a QString (hot in size walks).
[[nodiscard]] bool isPackageExtension(QLatin1StringView extension);

} // namespace FileSystem
