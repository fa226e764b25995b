// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"
#include "services/AppDiscoveryService.h"
#include "platform/FileSystem.h"
#include "services/FileSizeCalculator.h"

#include <QJsonArray>

namespace Commands {

int apps(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption json(QStringLiteral("json"));
    parser.addOption(json);
    if (!CliSupport::parse(parser, QStringLiteral("apps"), arguments, 0, 0))
        return 2;
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

int size(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption limit(QStringLiteral("limit"), QString(), QStringLiteral("N"),
                                   QString::number(FileSizeCalculator::defaultEntryLimit));
    parser.addOption(limit);
    if (!CliSupport::parse(parser, QStringLiteral("size"), arguments, 1, 1))
        return 2;
    bool ok = false;
    const qint64 entryLimit = parser.value(limit).toLongLong(&ok);
    if (!ok || entryLimit < 0) {
        CliSupport::printError(QStringLiteral("kestrune-cli size: --limit takes a whole number of 0 or more, not \"%1\"")
                                   .arg(parser.value(limit)));
        CliSupport::printUsage(stderr);
        return 2;
    }
    const QString path = parser.positionalArguments().constFirst();
    // A dangling link is still something (of size 0); a path that names nothing is a mistake worth saying.
    if (!FileSystem::exists(path) && !FileSystem::isSymbolicLink(path)) {
        CliSupport::printError(QStringLiteral("kestrune-cli size: \"%1\" does not exist").arg(path));
        return 1;
    }
    qint64 bytes = 0;
    CliSupport::runWithProgress(QStringLiteral("Measuring…"), true,
                                [&] { bytes = FileSizeCalculator::itemSize(path, entryLimit); });
    CliSupport::printLine(QString::number(bytes));
    return 0;
}

} // namespace Commands
