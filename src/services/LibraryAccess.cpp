// SPDX-License-Identifier: MIT
#include "services/LibraryAccess.h"

#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"

namespace LibraryAccess {

namespace {

bool refuses(const QString &folder)
{
    bool isDirectory = false;
    return FileSystem::exists(folder, &isDirectory) && isDirectory && !FileSystem::contentsOfDirectory(folder);
}

} // namespace

bool isRefused()
{
    for (const QString &relative : {QStringLiteral("/Library/Containers"), QStringLiteral("/Library/Group Containers")}) {
        const QString folder = FileSystemLayout::homePath(relative);
        if (refuses(folder))
            return true;
        const auto entries = FileSystem::contentsOfDirectory(folder);
        if (!entries)
            continue;
        // An app's container may list while its Data folder, where the files are, is refused.
        const bool perApp = relative.endsWith(QLatin1StringView("/Containers"));
        for (const FileSystem::DirectoryEntry &entry : *entries) {
            if (refuses(entry.path) || (perApp && refuses(entry.path + QStringLiteral("/Data"))))
                return true;
        }
    }
    return false;
}

} // namespace LibraryAccess
