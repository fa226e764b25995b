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
    const QCommandLineOption root(QStringLiteral("root"), QStringLiteral("The folder that stands for \"/\" (default \"/\")."),
                                  QStringLiteral("DIR"), QStringLiteral("/"));
    const QCommandLineOption home(QStringLiteral("home"), QStringLiteral("The user's home folder (default $HOME)."),
                                  QStringLiteral("DIR"), QDir::homePath());
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help."));
    const QCommandLineOption version(QStringLiteral("version"), QStringLiteral("Show the program's version."));
    parser.addOptions({root, home, help, version});
    // Not QCoreApplication::arguments(): it turns bytes that are not UTF-8 into U+FFFD, and such a path
    // could then not be found.
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments.append(NativePath::decode(argv[index], qsizetype(std::strlen(argv[index]))));
    if (!parser.parse(arguments))
        return CliSupport::usageError(QString(), parser.errorText());
    if (parser.isSet(help)) {
        CliSupport::printHelp(parser);
        return CliSupport::finish(0);
    }
    if (parser.isSet(version)) {
        CliSupport::printLine(QStringLiteral("kestrune-cli ") + QCoreApplication::applicationVersion());
        return CliSupport::finish(0);
    }
    for (const QCommandLineOption *folder : {&root, &home}) {
        if (parser.isSet(*folder) && !QFileInfo(parser.value(*folder)).isDir()) {
            return CliSupport::usageError(QString(), QStringLiteral("--%1: \"%2\" is not a folder")
                                                         .arg(folder->names().constFirst(), parser.value(*folder)));
        }
    }
    FileSystemLayout::setRoot(parser.value(root));
    FileSystemLayout::setHome(parser.value(home));

    QStringList rest = parser.positionalArguments();
    if (rest.isEmpty())
        return CliSupport::usageError(QString(), QStringLiteral("missing command"));
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
    if (found == commands.end())
        return CliSupport::usageError(QString(), QStringLiteral("unknown command \"%1\"").arg(command));
    return CliSupport::finish(found->second(rest));
}
