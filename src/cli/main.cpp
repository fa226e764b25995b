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

namespace {

// Not QCoreApplication::arguments(): it turns bytes that are not UTF-8 into U+FFFD, and such a path could
// then not be found.
QStringList decodedArguments(int argc, char *argv[])
{
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments.append(NativePath::decode(argv[index], qsizetype(std::strlen(argv[index]))));
    return arguments;
}

// Reads --root and --home into the file-system layout and leaves the command and its arguments in rest.
// Returns the exit code when the program is to stop here (help, version, a usage error).
std::optional<int> parseGlobalOptions(const QStringList &arguments, QStringList *rest)
{
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
    if (!parser.parse(arguments))
        return CliSupport::usageError(QString(), parser.errorText());
    if (parser.isSet(help)) {
        CliSupport::printHelp(parser);
        return 0;
    }
    if (parser.isSet(version)) {
        CliSupport::printLine(QStringLiteral("kestrune-cli ") + QCoreApplication::applicationVersion());
        return 0;
    }
    for (const QCommandLineOption *folder : {&root, &home}) {
        if (parser.isSet(*folder) && !QFileInfo(parser.value(*folder)).isDir()) {
            return CliSupport::usageError(QString(), QStringLiteral("--%1: \"%2\" is not a folder")
                                                         .arg(folder->names().constFirst(), parser.value(*folder)));
        }
    }
    *rest = parser.positionalArguments();
    if (rest->isEmpty())
        return CliSupport::usageError(QString(), QStringLiteral("missing command"));
    FileSystemLayout::setRoot(parser.value(root));
    FileSystemLayout::setHome(parser.value(home));
    return std::nullopt;
}

int runCommand(QStringList arguments)
{
    static const std::map<QString, std::function<int(const QStringList &)>> commands = {
        {QStringLiteral("apps"), Commands::apps},
        {QStringLiteral("scan"), Commands::scan},
        {QStringLiteral("orphans"), Commands::orphans},
        {QStringLiteral("remove"), Commands::remove},
        {QStringLiteral("restore"), Commands::restore},
        {QStringLiteral("size"), Commands::size},
        {QStringLiteral("check-update"), Commands::checkUpdate},
    };
    const QString command = arguments.takeFirst();
    const auto found = commands.find(command);
    if (found == commands.end())
        return CliSupport::usageError(QString(), QStringLiteral("unknown command \"%1\"").arg(command));
    return found->second(arguments);
}

} // namespace

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

    QStringList command;
    if (const std::optional<int> stop = parseGlobalOptions(decodedArguments(argc, argv), &command))
        return CliSupport::finish(*stop);
    return CliSupport::finish(runCommand(command));
}
