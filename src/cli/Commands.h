// SPDX-License-Identifier: MIT
#pragma once

#include "models/OrphanedAppGroup.h"
#include "models/ScanResult.h"
#include "models/InstalledApp.h"

#include <QStringList>

#include <optional>

// One function per command. Each receives the arguments after the command's name and returns the
// process exit code: 0 done, 1 the operation failed, 2 usage error.
namespace Commands {

int apps(const QStringList &arguments);
int size(const QStringList &arguments);
int scan(const QStringList &arguments);
int orphans(const QStringList &arguments);
int remove(const QStringList &arguments);
int restore(const QStringList &arguments);
int checkUpdate(const QStringList &arguments);

// Shared by scan and remove: TARGET resolved to an app (a ".app" path, or the name or bundle identifier
// of an installed app). Absent with a message naming the candidates when none or several match.
[[nodiscard]] std::optional<InstalledApp> resolveApp(const QString &target, QString *error);
// What resolveApp accepts, for the help of scan and remove.
[[nodiscard]] inline QString targetHelp()
{
    return QStringLiteral("A path ending in \".app\" (need not be installed), or the name or bundle identifier of an "
                          "installed app, in any letter case.");
}
// Shared by orphans and remove: the removed-app group with this id from a fresh scan.
[[nodiscard]] std::optional<OrphanedAppGroup> findOrphanGroup(const QString &id, QString *error);

} // namespace Commands
