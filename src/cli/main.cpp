// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"
#include "platform/FileSystemLayout.h"
#include "platform/NativePath.h"
#include "services/UpdateCheckService.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cstring>
#include <functional>
#include <map>

int main(int argc, char *argv[])
{
    // Before anything opens a file: a report that cannot be written must not be produced by moving
    // things to the Trash first.
    if (!CliSupport::claimStandardStreams()) {
        CliSupport::printError(QStringLiteral("kestrune-cli: standard output is closed; nothing was done"));
        return 1;
    }
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kestrune-cli"));
    QCoreApplication::setApplicationVersion(UpdateCheckService::currentVersion());

    // Global options stop at the command's name; everything after it belongs to the command.
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption root(QStringLiteral("root"), QString(), QStringLiteral("DIR"), QStringLiteral("/"));
    const QCommandLineOption home(QStringLiteral("home"), QString(), QStringLiteral("DIR"), QDir::homePath());
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringLiteral("version"));
    parser.addOptions({root, home, help, version});
    // Not QCoreApplication::arguments(): it turns bytes that are not UTF-8 into U+FFFD, and such a path
    // could then not be found.
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments.append(NativePath::decode(argv[index], qsizetype(std::strlen(argv[index]))));
    if (!parser.parse(arguments)) {
        CliSupport::printError(QStringLiteral("kestrune-cli: ") + parser.errorText());
        CliSupport::printUsage(stderr);
        return 2;
    }
    if (parser.isSet(help)) {
        CliSupport::printUsage(stdout);
        return CliSupport::finish(0);
    }
    if (parser.isSet(version)) {
        CliSupport::printLine(QStringLiteral("kestrune-cli ") + QCoreApplication::applicationVersion());
        return CliSupport::finish(0);
    }
    for (const QCommandLineOption *folder : {&root, &home}) {
        if (parser.isSet(*folder) && !QFileInfo(parser.value(*folder)).isDir()) {
            CliSupport::printError(QStringLiteral("kestrune-cli: --%1: \"%2\" is not a folder")
                                       .arg(folder->names().constFirst(), parser.value(*folder)));
            return 2;
        }
    }
    FileSystemLayout::setRoot(parser.value(root));
    FileSystemLayout::setHome(parser.value(home));

    QStringList rest = parser.positionalArguments();
    if (rest.isEmpty()) {
        CliSupport::printError(QStringLiteral("kestrune-cli: missing command"));
        CliSupport::printUsage(stderr);
        return 2;
    }
    const QString command = rest.takeFirst();
    static const std::map<QString, std::function<int(const QStringList &)>> commands = {
        {QStringLiteral("apps"), Commands::apps},
        {QStringLiteral("scan"), Commands::scan},
        {QStringLiteral("orphans"), Commands::orphans},
        {QStringLiteral("remove"), Commands::remove},
        {QStringLiteral("restore"), Commands::restore},
        {QStringLiteral("size"), Commands::size},
        {QStringLiteral("check-update"), Commands::checkUpdate},
    };
    const auto found = commands.find(command);
    if (found == commands.end()) {
        CliSupport::printError(QStringLiteral("kestrune-cli: unknown command \"%1\"").arg(command));
        CliSupport::printUsage(stderr);
        return 2;
    }
    return CliSupport::finish(found->second(rest));
}
