// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"
#include "platform/ByteCountFormatter.h"
#include "services/BundleRemovability.h"
#include "services/DeletionService.h"
#include "services/LeftoverScannerService.h"

#include <QJsonArray>
#include <QTextStream>

#include <unistd.h>

#include <cstdio>

namespace Commands {

namespace {

QString adminNote(const LeftoverItem &item)
{
    return item.requiresAdmin() ? QStringLiteral("  (may need administrator rights)") : QString();
}

// Lines for people go to stderr in JSON mode, so stdout stays one JSON document.
void printList(const QList<LeftoverItem> &items, bool toStderr)
{
    qsizetype categoryWidth = 0;
    for (const LeftoverItem &item : items)
        categoryWidth = std::max(categoryWidth, LeftoverCategories::rawValue(item.category).size());
    for (const LeftoverItem &item : items) {
        const QString line = QStringLiteral("%1  %2  %3%4")
                                 .arg(item.formattedSize().rightJustified(10),
                                      LeftoverCategories::rawValue(item.category).leftJustified(categoryWidth),
                                      item.path(), adminNote(item));
        toStderr ? CliSupport::printError(line) : CliSupport::printLine(line);
    }
}

bool confirmed(const QList<LeftoverItem> &items)
{
    const QByteArray prompt = QStringLiteral("Move %1 (%2) to the Trash? [y/N] ")
                                  .arg(CliSupport::itemCountText(items.size()), ByteCountFormatter::string(LeftoverItems::totalSize(items)))
                                  .toUtf8();
    std::fflush(stdout);
    std::fwrite(prompt.constData(), 1, size_t(prompt.size()), stderr);
    std::fflush(stderr);
    QTextStream input(stdin);
    const QString answer = input.readLine().trimmed().toLower();
    return answer == QLatin1String("y") || answer == QLatin1String("yes");
}

QString keptReason(const LeftoverItem &item)
{
    return item.claimedBy ? item.claimedBy->label() + QStringLiteral(": ") + item.claimedBy->reason : QString();
}

void printKept(const QList<LeftoverItem> &kept, bool toStderr)
{
    for (const LeftoverItem &item : kept) {
        const QString line = QStringLiteral("%1  kept  %2  (%3)").arg(item.formattedSize().rightJustified(10), item.path(), keptReason(item));
        toStderr ? CliSupport::printError(line) : CliSupport::printLine(line);
    }
}

QJsonObject reportJson(bool dryRun, const QList<LeftoverItem> &deleted, const QList<QPair<LeftoverItem, QString>> &failed,
                       const QList<LeftoverItem> &kept)
{
    QJsonArray deletedList;
    for (const LeftoverItem &item : deleted)
        deletedList.append(CliSupport::itemJson(item));
    QJsonArray failedList;
    for (const auto &[item, message] : failed)
        failedList.append(QJsonObject{{QStringLiteral("item"), CliSupport::itemJson(item)}, {QStringLiteral("message"), message}});
    QJsonArray keptList;
    for (const LeftoverItem &item : kept)
        keptList.append(QJsonObject{{QStringLiteral("item"), CliSupport::itemJson(item)}, {QStringLiteral("reason"), keptReason(item)}});
    return {{QStringLiteral("dryRun"), dryRun}, {QStringLiteral("deleted"), deletedList}, {QStringLiteral("failed"), failedList},
            {QStringLiteral("kept"), keptList}};
}

} // namespace

int remove(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addPositionalArgument(QStringLiteral("TARGET"), Commands::targetHelp(), QStringLiteral("[TARGET]"));
    const QCommandLineOption orphan(QStringLiteral("orphan"), QStringLiteral("Remove the leftovers of the removed app with this id, "
                                                                             "as orphans lists it, instead of TARGET."),
                                    QStringLiteral("ID"));
    const QCommandLineOption dryRun(QStringLiteral("dry-run"), QStringLiteral("List what would move and move nothing."));
    const QCommandLineOption yes(QStringLiteral("yes"), QStringLiteral("Move without asking."));
    const QCommandLineOption includeClaimed(QStringLiteral("include-claimed"),
                                           QStringLiteral("Move the items another app or macOS owns too."));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print JSON instead of text."));
    parser.addOptions({orphan, dryRun, yes, includeClaimed, json});
    if (const std::optional<int> stop = CliSupport::parse(parser, QStringLiteral("remove"), arguments, 0, 1))
        return *stop;
    const bool byGroup = parser.isSet(orphan);
    if (byGroup == !parser.positionalArguments().isEmpty()) {
        return CliSupport::usageError(QStringLiteral("remove"), byGroup ? QStringLiteral("give either TARGET or --orphan ID, not both")
                                                                        : QStringLiteral("missing TARGET or --orphan ID"));
    }
    const bool asJson = parser.isSet(json);
    const bool isDryRun = parser.isSet(dryRun);

    // Guessing what an unattended caller meant could cost the user's data: it must say --yes. Refused
    // before the scan, so a script learns it at once.
    const bool mustConfirm = !isDryRun && !parser.isSet(yes);
    if (mustConfirm && !::isatty(STDIN_FILENO)) {
        return CliSupport::usageError(QStringLiteral("remove"), QStringLiteral("no terminal to confirm on; pass --yes to move the items "
                                                                               "to the Trash, or --dry-run to list them"));
    }

    QList<LeftoverItem> items;
    QString error;
    std::optional<InstalledApp> installed;
    if (byGroup) {
        std::optional<OrphanedAppGroup> group;
        CliSupport::runWithProgress(QStringLiteral("Scanning for leftovers of removed apps…"), !asJson,
                                    [&] { group = Commands::findOrphanGroup(parser.value(orphan), &error); });
        if (!group) {
            CliSupport::printError(QStringLiteral("kestrune-cli remove: ") + error);
            return 1;
        }
        items = group->items;
    } else {
        const std::optional<InstalledApp> app = Commands::resolveApp(parser.positionalArguments().constFirst(), &error);
        if (!app) {
            CliSupport::printError(QStringLiteral("kestrune-cli remove: ") + error);
            return 1;
        }
        CliSupport::runWithProgress(QStringLiteral("Scanning %1…").arg(app->name), !asJson,
                                    [&] { items = LeftoverScannerService::scan(*app).result().items; });
        installed = app;
    }
    // What another app or macOS owns stays unless the caller asks for it by name of the option.
    QList<LeftoverItem> kept;
    if (!parser.isSet(includeClaimed)) {
        kept = items;
        kept.removeIf([](const LeftoverItem &item) { return item.isSelectedByDefault(); });
        items.removeIf([](const LeftoverItem &item) { return !item.isSelectedByDefault(); });
    }
    const QList<LeftoverItem> ordered = DeletionService::processingOrder(items);

    if (isDryRun || ordered.isEmpty()) {
        if (asJson) {
            CliSupport::printJson(reportJson(isDryRun, isDryRun ? ordered : QList<LeftoverItem>(), {}, kept));
        } else if (ordered.isEmpty()) {
            printKept(kept, false);
            CliSupport::printLine(QStringLiteral("Nothing to move."));
        } else {
            printList(ordered, false);
            printKept(kept, false);
            CliSupport::printLine(QStringLiteral("Would move %1 (%2) to the Trash.")
                                      .arg(CliSupport::itemCountText(ordered.size()), ByteCountFormatter::string(LeftoverItems::totalSize(ordered))));
        }
        return 0;
    }

    // Checked before anything moves: the bundle goes last, after the app's data.
    const auto isBundle = [&installed](const LeftoverItem &item) { return item.path() == installed->bundlePath(); };
    if (installed && std::any_of(ordered.cbegin(), ordered.cend(), isBundle)) {
        if (const std::optional<QString> obstacle = BundleRemovability::check(*installed)) {
            CliSupport::printError(QStringLiteral("kestrune-cli remove: ") + *obstacle);
            return 1;
        }
    }

    if (mustConfirm) {
        printList(ordered, asJson);
        printKept(kept, asJson);
        if (!confirmed(ordered)) {
            CliSupport::printError(QStringLiteral("Nothing was moved."));
            return 1;
        }
    }

    DeletionReport report;
    CliSupport::runWithProgress(QStringLiteral("Moving to the Trash…"), !asJson,
                                [&] { report = DeletionService::moveToTrash(ordered); });

    if (asJson) {
        CliSupport::printJson(reportJson(false, report.deleted, report.failed, kept));
    } else {
        QList<QStringList> rows;
        for (const LeftoverItem &item : report.deleted)
            rows.append({QStringLiteral("moved"), item.formattedSize(), item.path()});
        for (const auto &[item, message] : report.failed)
            rows.append({QStringLiteral("FAILED"), item.formattedSize(), item.path() + QStringLiteral(": ") + message + adminNote(item)});
        for (const LeftoverItem &item : std::as_const(kept))
            rows.append({QStringLiteral("kept"), item.formattedSize(), item.path() + QStringLiteral(" (") + keptReason(item) + QLatin1Char(')')});
        CliSupport::printTable(rows);
        CliSupport::printLine(QStringLiteral("Moved %1 (%2) to the Trash.")
                                  .arg(CliSupport::itemCountText(report.deleted.size()), ByteCountFormatter::string(LeftoverItems::totalSize(report.deleted))));
    }
    if (!report.failed.isEmpty()) {
        CliSupport::printError(QStringLiteral("kestrune-cli remove: %1 could not be moved to the Trash")
                                   .arg(CliSupport::itemCountText(report.failed.size())));
        return 1;
    }
    return 0;
}

} // namespace Commands
