// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"
#include "platform/FileSystem.h"
#include "services/FileSizeCalculator.h"

namespace Commands {

int size(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addPositionalArgument(QStringLiteral("PATH"), QStringLiteral("The file or folder to measure."));
    const QCommandLineOption limit(QStringLiteral("limit"),
                                   QStringLiteral("Count at most N entries (default %1).").arg(FileSizeCalculator::defaultEntryLimit),
                                   QStringLiteral("N"), QString::number(FileSizeCalculator::defaultEntryLimit));
    parser.addOption(limit);
    if (const std::optional<int> stop = CliSupport::parse(parser, QStringLiteral("size"), arguments, 1, 1))
        return *stop;
    bool ok = false;
    const qint64 entryLimit = parser.value(limit).toLongLong(&ok);
    if (!ok || entryLimit < 0) {
        return CliSupport::usageError(QStringLiteral("size"), QStringLiteral("--limit takes a whole number of 0 or more, not \"%1\"")
                                                                  .arg(parser.value(limit)));
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
