// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"
#include "platform/FileSystem.h"
#include "platform/Trash.h"
#include "services/DeletionService.h"
#include "services/FileSizeCalculator.h"

#include <QJsonArray>

#include <limits>

namespace Commands {

int restore(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addPositionalArgument(QStringLiteral("PATH"), QStringLiteral("Where an item was before it went to the Trash."),
                                 QStringLiteral("PATH..."));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print JSON instead of a table."));
    parser.addOption(json);
    if (const std::optional<int> stop = CliSupport::parse(parser, QStringLiteral("restore"), arguments, 1, std::numeric_limits<int>::max()))
        return *stop;
    const bool asJson = parser.isSet(json);

    // The Trash records where an item came from, not what it was: every item is of the "other" kind.
    QList<TrashedItem> found;
    RestoreReport report;
    for (const QString &argument : parser.positionalArguments()) {
        const QString path = FileSystem::standardizedPath(argument);
        const std::optional<QString> entry = Trash::newestEntry(path);
        if (!entry) {
            report.failed.append({LeftoverItem::at(path, LeftoverCategory::other, 0),
                                  QStringLiteral("Nothing from this path is in the Trash.")});
            continue;
        }
        found.append({LeftoverItem::at(path, LeftoverCategory::other, FileSizeCalculator::itemSize(*entry)), *entry});
    }
    const RestoreReport putBack = DeletionService::putBack(found);
    report.restored = putBack.restored;
    report.failed.append(putBack.failed);

    if (asJson) {
        QJsonArray restored;
        for (const LeftoverItem &item : report.restored)
            restored.append(CliSupport::itemJson(item));
        QJsonArray failed;
        for (const auto &[item, message] : report.failed)
            failed.append(QJsonObject{{QStringLiteral("item"), CliSupport::itemJson(item)}, {QStringLiteral("message"), message}});
        CliSupport::printJson({{QStringLiteral("restored"), restored}, {QStringLiteral("failed"), failed}});
    } else {
        QList<QStringList> rows;
        for (const LeftoverItem &item : report.restored)
            rows.append({QStringLiteral("restored"), item.formattedSize(), item.path()});
        for (const auto &[item, message] : report.failed)
            rows.append({QStringLiteral("FAILED"), item.formattedSize(), item.path() + QStringLiteral(": ") + message});
        CliSupport::printTable(rows);
        CliSupport::printLine(QStringLiteral("Put back %1.").arg(CliSupport::itemCountText(report.restored.size())));
    }
    if (!report.failed.isEmpty()) {
        CliSupport::printError(QStringLiteral("kestrune-cli restore: %1 could not be put back").arg(CliSupport::itemCountText(report.failed.size())));
        return 1;
    }
    return 0;
}

} // namespace Commands
