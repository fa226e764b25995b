// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"
#include "services/UpdateCheckService.h"

#include <QJsonValue>

namespace Commands {

int checkUpdate(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption feedOption(QStringLiteral("feed"), QStringLiteral("Ask this http or https feed instead of the program's own."),
                                        QStringLiteral("URL"));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print JSON instead of text."));
    parser.addOptions({feedOption, json});
    if (const std::optional<int> stop = CliSupport::parse(parser, QStringLiteral("check-update"), arguments, 0, 0))
        return *stop;

    QUrl feed = UpdateCheckService::feedURL();
    if (parser.isSet(feedOption)) {
        feed = QUrl(parser.value(feedOption), QUrl::StrictMode);
        if (!feed.isValid() || !UpdateCheckService::isFeedScheme(feed.scheme()) || feed.host().isEmpty()) {
            return CliSupport::usageError(QStringLiteral("check-update"), QStringLiteral("--feed takes an http or https URL, not \"%1\"")
                                                                              .arg(parser.value(feedOption)));
        }
    }

    const bool asJson = parser.isSet(json);
    const QString current = UpdateCheckService::currentVersion();
    std::optional<AppUpdateInfo> update;
    CliSupport::runWithProgress(QStringLiteral("Checking for updates…"), !asJson,
                                [&] { update = UpdateCheckService::checkForUpdate(feed).result(); });

    if (asJson) {
        QJsonObject object{{QStringLiteral("updateAvailable"), update.has_value()},
                           {QStringLiteral("currentVersion"), current}};
        if (update) {
            object.insert(QStringLiteral("version"), update->version);
            object.insert(QStringLiteral("downloadURL"), update->downloadURL.toString(QUrl::FullyEncoded));
            object.insert(QStringLiteral("releaseNotes"),
                          update->releaseNotes ? QJsonValue(*update->releaseNotes) : QJsonValue(QJsonValue::Null));
        }
        CliSupport::printJson(object);
        return 0;
    }
    // An unreachable feed and an up-to-date program give the same answer, so the text claims no more.
    if (!update) {
        CliSupport::printLine(QStringLiteral("No newer version offered (this is %1).").arg(current));
        return 0;
    }
    CliSupport::printLine(QStringLiteral("Kestrune %1 is available (this is %2).").arg(CliSupport::terminalSafe(update->version), current));
    CliSupport::printLine(QStringLiteral("Download: ") + update->downloadURL.toString(QUrl::FullyEncoded));
    // Notes keep their lines; every other control character is shown, not obeyed.
    if (update->releaseNotes)
        CliSupport::printLine(QStringLiteral("\n") + QString(*update->releaseNotes).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    return 0;
}

} // namespace Commands
