// SPDX-License-Identifier: MIT
#include "services/AppDiscoveryService.h"
#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"
#include "platform/TextCompare.h"

#include <QSet>

#include <algorithm>

namespace AppDiscoveryService {

QList<InstalledApp> discoverInstalledApps()
{
    // Formed on every call rather than once: the layout may point elsewhere between calls (tests).
    const QString applicationPaths[] = {
        FileSystemLayout::systemPath(QStringLiteral("/Applications")),
        FileSystemLayout::homePath(QStringLiteral("/Applications")),
    };

    QList<InstalledApp> apps;
    QSet<QString> seenPaths;
    for (const QString &folder : applicationPaths) {
        const auto entries = FileSystem::contentsOfDirectory(FileSystem::standardizedPath(folder));
        if (!entries)
            continue;
        for (const FileSystem::DirectoryEntry &entry : *entries) {
            if (FileSystem::pathExtension(entry.name) != QLatin1String("app"))
                continue;
            if (seenPaths.contains(entry.path))
                continue;
            seenPaths.insert(entry.path);
            if (auto app = InstalledApp::from(entry.path))
                apps.append(std::move(*app));
        }
    }
    std::stable_sort(apps.begin(), apps.end(), [](const InstalledApp &a, const InstalledApp &b) {
        return TextCompare::localizedCaseInsensitiveLess(a.name, b.name);
    });
    return apps;
}

} // namespace AppDiscoveryService
