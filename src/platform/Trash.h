// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

// Moves one file, folder or symbolic link (the link itself) to the user's Trash, where the desktop's file manager can restore it. On Linux this is the
// freedesktop Trash through GIO: $XDG_DATA_HOME/Trash for the home file system, the mount's own
// .Trash-$UID elsewhere; each item sits in files/ beside a record in info/ of where it came from.
namespace Trash {

// On failure returns false and sets *error to a message for people; on success *trashedPath is where
// the item now is. An item whose Trash record could not be written is moved back and reported as a
// failure: without the record nothing could restore it.
[[nodiscard]] bool moveToTrash(const QString &path, QString *error, QString *trashedPath = nullptr);

// Moves an item that moveToTrash put at trashedPath back to originalPath, creating missing parent
// folders. Refuses, leaving the item in the Trash, when anything exists at originalPath or when the
// Trash no longer holds that item as coming from originalPath.
[[nodiscard]] bool putBack(const QString &trashedPath, const QString &originalPath, QString *error);

// Where the most recently trashed item that came from originalPath is now; absent when no Trash the
// item could have gone to holds one.
[[nodiscard]] std::optional<QString> newestEntry(const QString &originalPath);

} // namespace Trash
