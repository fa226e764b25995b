// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"
#include "services/AppDiscoveryService.h"

#include <QJsonArray>

namespace Commands {

int apps(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print JSON instead of a table."));
    parser.addOption(json);
    if (const std::optional<int> stop = CliSupport::parse(parser, QStringLiteral("apps"), arguments, 0, 0))
        return *stop;
    const bool asJson = parser.isSet(json);

    QList<InstalledApp> apps;
    CliSupport::runWithProgress(QStringLiteral("Loading applications…"), !asJson,
                                [&] { apps = AppDiscoveryService::discoverInstalledApps(); });
    if (asJson) {
        QJsonArray list;
        for (const InstalledApp &app : apps)
            list.append(CliSupport::appJson(app));
        CliSupport::printJson(QJsonObject{{QStringLiteral("apps"), list}});
        return 0;
    }
    QList<QStringList> rows;
    for (const InstalledApp &app : apps)
        rows.append({app.name, app.formattedSize(), app.bundleIdentifier.value_or(QStringLiteral("-")), app.bundlePath()});
    CliSupport::printTable(rows);
    CliSupport::printLine(CliSupport::countText(apps.size(), QStringLiteral("app"), QStringLiteral("apps")));
    return 0;
}

} // namespace Commands
