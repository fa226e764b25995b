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

#include <algorithm>
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

struct Request {
    std::optional<QString> groupId; // --orphan ID; otherwise target names an app
    QString target;
    bool asJson = false;
    bool dryRun = false;
    bool includeClaimed = false;
    bool mustConfirm = false;
};

std::optional<int> parseRequest(const QStringList &arguments, Request *request)
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
        return stop;
    if (parser.isSet(orphan) == !parser.positionalArguments().isEmpty()) {
        return CliSupport::usageError(QStringLiteral("remove"), parser.isSet(orphan) ? QStringLiteral("give either TARGET or --orphan ID, not both")
                                                                                    : QStringLiteral("missing TARGET or --orphan ID"));
    }
    if (parser.isSet(orphan))
        request->groupId = parser.value(orphan);
    else
        request->target = parser.positionalArguments().constFirst();
    request->asJson = parser.isSet(json);
    request->dryRun = parser.isSet(dryRun);
    request->includeClaimed = parser.isSet(includeClaimed);
    request->mustConfirm = !request->dryRun && !parser.isSet(yes);
    // Guessing what an unattended caller meant could cost the user's data: it must say --yes. Refused
    // before the scan, so a script learns it at once.
    if (request->mustConfirm && !::isatty(STDIN_FILENO)) {
        return CliSupport::usageError(QStringLiteral("remove"), QStringLiteral("no terminal to confirm on; pass --yes to move the items "
                                                                               "to the Trash, or --dry-run to list them"));
    }
    return std::nullopt;
}

// What the scan found, and the app it belongs to when TARGET named one.
struct Found {
    QList<LeftoverItem> items;
    std::optional<InstalledApp> app;
};

std::optional<Found> findItems(const Request &request, QString *error)
{
    Found found;
    if (request.groupId) {
        std::optional<OrphanedAppGroup> group;
        CliSupport::runWithProgress(QStringLiteral("Scanning for leftovers of removed apps…"), !request.asJson,
                                    [&] { group = Commands::findOrphanGroup(*request.groupId, error); });
        if (!group)
            return std::nullopt;
        found.items = group->items;
        return found;
    }
    found.app = Commands::resolveApp(request.target, error);
    if (!found.app)
        return std::nullopt;
    CliSupport::runWithProgress(QStringLiteral("Scanning %1…").arg(found.app->name), !request.asJson,
                                [&] { found.items = LeftoverScannerService::scan(*found.app).result().items; });
    return found;
}

// A dry run, or nothing to move: what would happen, and nothing happens.
void printPlan(const Request &request, const QList<LeftoverItem> &ordered, const QList<LeftoverItem> &kept)
{
    if (request.asJson) {
        CliSupport::printJson(reportJson(request.dryRun, request.dryRun ? ordered : QList<LeftoverItem>(), {}, kept));
        return;
    }
    if (ordered.isEmpty()) {
        printKept(kept, false);
        CliSupport::printLine(QStringLiteral("Nothing to move."));
        return;
    }
    printList(ordered, false);
    printKept(kept, false);
    CliSupport::printLine(QStringLiteral("Would move %1 (%2) to the Trash.")
                              .arg(CliSupport::itemCountText(ordered.size()), ByteCountFormatter::string(LeftoverItems::totalSize(ordered))));
}

// What another app or macOS owns stays unless the caller asks for it by name of the option.
QList<LeftoverItem> takeClaimed(QList<LeftoverItem> *items)
{
    QList<LeftoverItem> claimed = *items;
    claimed.removeIf([](const LeftoverItem &item) { return item.isSelectedByDefault(); });
    items->removeIf([](const LeftoverItem &item) { return !item.isSelectedByDefault(); });
    return claimed;
}

// Checked before anything moves (the bundle goes last, after the app's data), then asked on the
// terminal unless --yes. False, with the reason on stderr, when nothing is to move.
bool readyToMove(const Request &request, const std::optional<InstalledApp> &app, const QList<LeftoverItem> &ordered,
                 const QList<LeftoverItem> &kept)
{
    const auto isBundle = [&app](const LeftoverItem &item) { return item.path() == app->bundlePath(); };
    if (app && std::any_of(ordered.cbegin(), ordered.cend(), isBundle)) {
        if (const std::optional<QString> obstacle = BundleRemovability::check(*app)) {
            CliSupport::printError(QStringLiteral("kestrune-cli remove: ") + *obstacle);
            return false;
        }
    }
    if (!request.mustConfirm)
        return true;
    printList(ordered, request.asJson);
    printKept(kept, request.asJson);
    if (confirmed(ordered))
        return true;
    CliSupport::printError(QStringLiteral("Nothing was moved."));
    return false;
}

void printReport(const DeletionReport &report, const QList<LeftoverItem> &kept, bool asJson)
{
    if (asJson) {
        CliSupport::printJson(reportJson(false, report.deleted, report.failed, kept));
        return;
    }
    QList<QStringList> rows;
    for (const LeftoverItem &item : report.deleted)
        rows.append({QStringLiteral("moved"), item.formattedSize(), item.path()});
    for (const auto &[item, message] : report.failed)
        rows.append({QStringLiteral("FAILED"), item.formattedSize(), item.path() + QStringLiteral(": ") + message + adminNote(item)});
    for (const LeftoverItem &item : kept)
        rows.append({QStringLiteral("kept"), item.formattedSize(), item.path() + QStringLiteral(" (") + keptReason(item) + QLatin1Char(')')});
    CliSupport::printTable(rows);
    CliSupport::printLine(QStringLiteral("Moved %1 (%2) to the Trash.")
                              .arg(CliSupport::itemCountText(report.deleted.size()),
                                   ByteCountFormatter::string(LeftoverItems::totalSize(report.deleted))));
}

} // namespace

int remove(const QStringList &arguments)
{
    Request request;
    if (const std::optional<int> stop = parseRequest(arguments, &request))
        return *stop;
    QString error;
    std::optional<Found> found = findItems(request, &error);
    if (!found) {
        CliSupport::printError(QStringLiteral("kestrune-cli remove: ") + error);
        return 1;
    }
    const QList<LeftoverItem> kept = request.includeClaimed ? QList<LeftoverItem>() : takeClaimed(&found->items);
    const QList<LeftoverItem> ordered = DeletionService::processingOrder(found->items);
    if (request.dryRun || ordered.isEmpty()) {
        printPlan(request, ordered, kept);
        return 0;
    }
    if (!readyToMove(request, found->app, ordered, kept))
        return 1;
    DeletionReport report;
    CliSupport::runWithProgress(QStringLiteral("Moving to the Trash…"), !request.asJson,
                                [&] { report = DeletionService::moveToTrash(ordered); });
    printReport(report, kept, request.asJson);
    if (!report.failed.isEmpty()) {
        CliSupport::printError(QStringLiteral("kestrune-cli remove: %1 could not be moved to the Trash")
                                   .arg(CliSupport::itemCountText(report.failed.size())));
        return 1;
    }
    return 0;
}

} // namespace Commands
