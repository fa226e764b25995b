// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"
#include "services/OrphanedLeftoverScannerService.h"

#include <QJsonArray>

namespace Commands {

namespace {

QList<OrphanedAppGroup> scanOrphans(bool showProgress)
{
    QList<OrphanedAppGroup> groups;
    CliSupport::runWithProgress(QStringLiteral("Looking for leftovers of removed apps…"), showProgress,
                                [&] { groups = OrphanedLeftoverScannerService::scan().result(); });
    return groups;
}

void printGroup(const OrphanedAppGroup &group)
{
    CliSupport::printLine(QStringLiteral("[%1] %2").arg(OrphanConfidences::rawValue(group.confidence), CliSupport::terminalSafe(group.displayName)));
    CliSupport::printLine(QStringLiteral("  id:    %1").arg(CliSupport::terminalSafe(group.bundleIdentifier.value_or(group.id))));
    CliSupport::printLine(QStringLiteral("  size:  %1").arg(group.formattedTotalSize()));
    CliSupport::printLine(QStringLiteral("  why:   %1").arg(CliSupport::terminalSafe(group.evidenceSummary)));
    QList<QStringList> rows;
    for (const LeftoverItem &item : group.items)
        rows.append({QStringLiteral("   "), LeftoverCategories::rawValue(item.category), item.formattedSize(), item.path()});
    CliSupport::printTable(rows);
}

} // namespace

int orphans(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print JSON instead of text."));
    const QCommandLineOption all(QStringLiteral("all"), QStringLiteral("Show the uncertain matches too."));
    parser.addOptions({json, all});
    if (const std::optional<int> stop = CliSupport::parse(parser, QStringLiteral("orphans"), arguments, 0, 0))
        return *stop;
    const bool asJson = parser.isSet(json);

    QList<OrphanedAppGroup> groups = scanOrphans(!asJson);
    const qsizetype hidden = parser.isSet(all) ? 0 : groups.removeIf([](const OrphanedAppGroup &group) {
        return group.confidence == OrphanConfidence::uncertain;
    });
    if (asJson) {
        QJsonArray list;
        for (const OrphanedAppGroup &group : std::as_const(groups))
            list.append(CliSupport::groupJson(group));
        CliSupport::printJson(QJsonObject{{QStringLiteral("groups"), list}});
        return 0;
    }
    for (const OrphanedAppGroup &group : std::as_const(groups)) {
        printGroup(group);
        CliSupport::printLine(QString());
    }
    QString summary = CliSupport::countText(groups.size(), QStringLiteral("removed app"), QStringLiteral("removed apps"))
        + QStringLiteral(" with leftovers");
    if (hidden > 0) {
        summary += QStringLiteral(" (%1 hidden, shown with --all)")
                       .arg(CliSupport::countText(hidden, QStringLiteral("uncertain match"), QStringLiteral("uncertain matches")));
    }
    CliSupport::printLine(summary);
    return 0;
}

std::optional<OrphanedAppGroup> findOrphanGroup(const QString &id, QString *error)
{
    // No progress line: the caller may be in JSON mode, which never shows one.
    const QList<OrphanedAppGroup> groups = scanOrphans(false);
    for (const OrphanedAppGroup &group : groups) {
        if (group.id == id)
            return group;
    }
    // Ids keep their letter case; a near miss in case is the likeliest typo, so name it.
    QStringList near;
    for (const OrphanedAppGroup &group : groups) {
        if (group.id.compare(id, Qt::CaseInsensitive) == 0)
            near.append(group.id);
    }
    *error = near.isEmpty()
        ? QStringLiteral("no leftovers of a removed app with id \"%1\" (kestrune-cli orphans --all lists them)").arg(id)
        : QStringLiteral("no leftovers of a removed app with id \"%1\"; did you mean: %2").arg(id, near.join(QStringLiteral(", ")));
    return std::nullopt;
}

} // namespace Commands
