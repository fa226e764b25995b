// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"
#include "models/LeftoverCategory.h"
#include "platform/ByteCountFormatter.h"
#include "platform/FileSystem.h"
#include "services/AppDiscoveryService.h"
#include "services/LeftoverScannerService.h"

#include <QJsonArray>

#include <algorithm>

namespace {

QString describe(const InstalledApp &app)
{
    return QStringLiteral("%1 (%2) at %3")
        .arg(CliSupport::terminalSafe(app.name),
             CliSupport::terminalSafe(app.bundleIdentifier.value_or(QStringLiteral("no bundle identifier"))),
             CliSupport::terminalSafe(app.bundlePath()));
}

void printHuman(const InstalledApp &app, const ScanResult &result, bool why)
{
    CliSupport::printLine(describe(app));
    qsizetype sizeWidth = 0;
    for (const LeftoverItem &item : result.items)
        sizeWidth = std::max(sizeWidth, item.formattedSize().size());
    for (const LeftoverCategory category : LeftoverCategories::allCases) {
        const QList<LeftoverItem> items = result.itemsFor(category);
        if (items.isEmpty())
            continue;
        CliSupport::printLine(QString());
        CliSupport::printLine(LeftoverCategories::rawValue(category));
        for (const LeftoverItem &item : items) {
            // Claimed rows stay unticked, so they carry a mark where the ticked ones carry none.
            CliSupport::printLine(QStringLiteral("  %1 %2  %3%4%5")
                                      .arg(item.claimedBy ? QStringLiteral("!") : QStringLiteral(" "),
                                           item.formattedSize().rightJustified(sizeWidth), CliSupport::terminalSafe(item.path()),
                                           item.requiresAdmin() ? QStringLiteral("  (needs administrator)") : QString(),
                                           item.claimedBy ? QStringLiteral("  [%1, kept]").arg(CliSupport::terminalSafe(item.claimedBy->label())) : QString()));
            if (why) {
                QString line = QStringLiteral("found by ") + FoundByValues::rawValue(item.foundBy);
                if (item.matched)
                    line += QStringLiteral(" (matched ") + CliSupport::terminalSafe(*item.matched) + QLatin1Char(')');
                if (item.claimedBy)
                    line += QStringLiteral("; ") + CliSupport::terminalSafe(item.claimedBy->label() + QStringLiteral(": ") + item.claimedBy->reason);
                CliSupport::printLine(QStringLiteral("     %1  %2").arg(QString(sizeWidth, QLatin1Char(' ')), line));
            }
        }
    }
    CliSupport::printLine(QString());
    const qsizetype claimed = std::count_if(result.items.cbegin(), result.items.cend(),
                                            [](const LeftoverItem &item) { return item.claimedBy.has_value(); });
    QString summary = CliSupport::itemCountText(result.items.size()) + QStringLiteral(", ") + result.formattedTotalSize();
    if (claimed > 0)
        summary += QStringLiteral("; remove keeps %1 marked ! (owned by another app or macOS)").arg(CliSupport::itemCountText(claimed));
    CliSupport::printLine(summary);
}

} // namespace

namespace Commands {

std::optional<InstalledApp> resolveApp(const QString &target, QString *error)
{
    QString path = target;
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    if (path.endsWith(QLatin1String(".app"))) {
        if (std::optional<InstalledApp> app = InstalledApp::from(path))
            return app;
        *error = QStringLiteral("\"%1\" is not an application bundle path").arg(target);
        return std::nullopt;
    }

    QList<InstalledApp> matches;
    const QList<InstalledApp> installed = AppDiscoveryService::discoverInstalledApps();
    for (const InstalledApp &app : installed) {
        const bool byName = app.name.compare(target, Qt::CaseInsensitive) == 0;
        const bool byIdentifier = app.bundleIdentifier && app.bundleIdentifier->compare(target, Qt::CaseInsensitive) == 0;
        if (byName || byIdentifier)
            matches.append(app);
    }
    if (matches.size() == 1)
        return matches.constFirst();

    if (matches.isEmpty()) {
        *error = QStringLiteral("no installed app is named or identified as \"%1\"; give its name, its bundle "
                                "identifier or a path ending in \".app\" (kestrune-cli apps lists them)")
                     .arg(target);
    } else {
        QStringList candidates;
        for (const InstalledApp &app : std::as_const(matches))
            candidates.append(QStringLiteral("  ") + describe(app));
        *error = QStringLiteral("\"%1\" matches %2 installed apps; give the path of the one you mean:\n%3")
                     .arg(target)
                     .arg(matches.size())
                     .arg(candidates.join(QLatin1Char('\n')));
    }
    return std::nullopt;
}

int scan(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addPositionalArgument(QStringLiteral("TARGET"), targetHelp());
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print JSON instead of text."));
    const QCommandLineOption why(QStringLiteral("why"), QStringLiteral("Show how each item was found."));
    parser.addOptions({json, why});
    if (const std::optional<int> stop = CliSupport::parse(parser, QStringLiteral("scan"), arguments, 1, 1))
        return *stop;
    const bool asJson = parser.isSet(json);
    const QString target = parser.positionalArguments().constFirst();

    std::optional<InstalledApp> app;
    QString error;
    ScanResult result;
    CliSupport::runWithProgress(QStringLiteral("Scanning…"), !asJson, [&] {
        app = resolveApp(target, &error);
        if (app)
            result = LeftoverScannerService::scan(*app).result();
    });
    if (!app) {
        CliSupport::printError(QStringLiteral("kestrune-cli scan: ") + error);
        return 1;
    }

    if (asJson) {
        QJsonArray items;
        for (const LeftoverItem &item : std::as_const(result.items))
            items.append(CliSupport::itemJson(item));
        CliSupport::printJson(QJsonObject{
            {QStringLiteral("app"), CliSupport::appJson(*app)},
            {QStringLiteral("items"), items},
            {QStringLiteral("totalSize"), result.totalSize()},
            {QStringLiteral("formattedTotalSize"), result.formattedTotalSize()},
        });
        return 0;
    }
    printHuman(*app, result, parser.isSet(why));
    return 0;
}

} // namespace Commands
