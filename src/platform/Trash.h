// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// FileManager's trashItem(at:): moves one file, folder or symbolic link (the link itself) to the user's
// Trash, where the desktop's file manager can restore it. On Linux this is the freedesktop Trash through
// GIO: $XDG_DATA_HOME/Trash for the home file system, the mount's own .Trash-$UID elsewhere.
namespace Trash {

// On failure returns false and sets *error to the platform's own message.
[[nodiscard]] bool moveToTrash(const QString &path, QString *error);

} // namespace Trash
