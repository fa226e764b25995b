// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace CliSupport {

QJsonObject appJson(const InstalledApp &app)
{
    return QJsonObject{
        {QStringLiteral("id"), app.id},
        {QStringLiteral("name"), app.name},
        {QStringLiteral("path"), app.bundlePath()},
        {QStringLiteral("bundleIdentifier"), app.bundleIdentifier ? QJsonValue(*app.bundleIdentifier) : QJsonValue()},
        {QStringLiteral("size"), app.size},
        {QStringLiteral("formattedSize"), app.formattedSize()},
    };
}

QJsonObject ownerJson(const ItemOwner &owner)
{
    return QJsonObject{
        {QStringLiteral("name"), owner.name},
        {QStringLiteral("bundleIdentifier"), owner.bundleIdentifier ? QJsonValue(*owner.bundleIdentifier) : QJsonValue()},
        {QStringLiteral("reason"), owner.reason},
    };
}

QJsonObject itemJson(const LeftoverItem &item)
{
    return QJsonObject{
        {QStringLiteral("id"), item.id},
        {QStringLiteral("path"), item.path()},
        {QStringLiteral("name"), item.name()},
        {QStringLiteral("category"), LeftoverCategories::rawValue(item.category)},
        {QStringLiteral("size"), item.size},
        {QStringLiteral("formattedSize"), item.formattedSize()},
        {QStringLiteral("requiresAdmin"), item.requiresAdmin()},
        {QStringLiteral("foundBy"), FoundByValues::rawValue(item.foundBy)},
        {QStringLiteral("matched"), item.matched ? QJsonValue(*item.matched) : QJsonValue()},
        {QStringLiteral("claimedBy"), item.claimedBy ? QJsonValue(ownerJson(*item.claimedBy)) : QJsonValue()},
        {QStringLiteral("selected"), item.isSelectedByDefault()},
    };
}

QJsonObject groupJson(const OrphanedAppGroup &group)
{
    QJsonArray items;
    for (const LeftoverItem &item : group.items)
        items.append(itemJson(item));
    return QJsonObject{
        {QStringLiteral("id"), group.id},
        {QStringLiteral("displayName"), group.displayName},
        {QStringLiteral("bundleIdentifier"), group.bundleIdentifier ? QJsonValue(*group.bundleIdentifier) : QJsonValue()},
        {QStringLiteral("confidence"), OrphanConfidences::rawValue(group.confidence)},
        {QStringLiteral("evidenceSummary"), group.evidenceSummary},
        {QStringLiteral("totalSize"), group.totalSize()},
        {QStringLiteral("formattedTotalSize"), group.formattedTotalSize()},
        {QStringLiteral("items"), items},
    };
}

void printJson(const QJsonObject &object)
{
    const QByteArray text = QJsonDocument(object).toJson(QJsonDocument::Indented);
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    std::fflush(stdout);
}

void printLine(const QString &text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

void printError(const QString &text)
{
    std::fflush(stdout);
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

void printTable(const QList<QStringList> &rows)
{
    QList<qsizetype> widths;
    for (const QStringList &row : rows) {
        for (qsizetype column = 0; column < row.size(); ++column) {
            if (widths.size() <= column)
                widths.append(0);
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    for (const QStringList &row : rows) {
        QString line;
        for (qsizetype column = 0; column < row.size(); ++column) {
            const bool last = column + 1 == row.size();
            line += last ? row[column] : row[column].leftJustified(widths[column]) + QStringLiteral("  ");
        }
        printLine(line);
    }
}

void printUsage(FILE *stream)
{
    std::fputs(
        "Usage: kestrune-cli [--root DIR] [--home DIR] COMMAND [options]\n"
        "\n"
        "  --root DIR  the folder that stands for \"/\" (default \"/\")\n"
        "  --home DIR  the user's home folder (default $HOME)\n"
        "\n"
        "Commands:\n"
        "  apps [--json]                      installed apps\n"
        "  scan TARGET [--why] [--json]       leftover scan of one app (a .app path, a name or a bundle identifier);\n"
        "                                     --why shows how each item was found\n"
        "  orphans [--all] [--json]           leftovers of removed apps\n"
        "  remove TARGET | --orphan ID [--dry-run] [--yes] [--include-claimed] [--json]\n"
        "                                     move an app and its leftovers, or a removed app's group, to the Trash;\n"
        "                                     items another app or macOS owns stay unless --include-claimed\n"
        "  size PATH [--limit N]              byte count of a file or folder\n"
        "  check-update [--feed URL] [--json] ask the release feed for a newer version\n",
        stream);
}

bool parse(QCommandLineParser &parser, const QString &command, const QStringList &arguments,
           int minimumPositional, int maximumPositional)
{
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    parser.addOption(help);
    if (!parser.parse(QStringList{QStringLiteral("kestrune-cli ") + command} + arguments)) {
        printError(QStringLiteral("kestrune-cli %1: %2").arg(command, parser.errorText()));
        printUsage(stderr);
        return false;
    }
    if (parser.isSet(help)) {
        printUsage(stdout);
        std::exit(0);
    }
    const qsizetype count = parser.positionalArguments().size();
    if (count < minimumPositional || count > maximumPositional) {
        printError(count < minimumPositional
                       ? QStringLiteral("kestrune-cli %1: missing argument").arg(command)
                       : QStringLiteral("kestrune-cli %1: unexpected argument \"%2\"").arg(command, parser.positionalArguments().value(maximumPositional)));
        printUsage(stderr);
        return false;
    }
    return true;
}

void runWithProgress(const QString &text, bool enabled, const std::function<void()> &work)
{
    if (!enabled || !::isatty(STDERR_FILENO)) {
        work();
        return;
    }
    std::mutex mutex;
    std::condition_variable finished;
    bool done = false;
    std::thread ticker([&] {
        using namespace std::chrono;
        const auto start = steady_clock::now();
        std::unique_lock lock(mutex);
        bool shown = false;
        // Quiet for the first moment, so quick work prints nothing extra.
        auto wait = milliseconds(400);
        while (!finished.wait_for(lock, wait, [&] { return done; })) {
            const auto seconds = duration_cast<duration<double>>(steady_clock::now() - start).count();
            const QByteArray line = QStringLiteral("\r\033[K%1 %2 s").arg(text).arg(seconds, 0, 'f', 1).toUtf8();
            std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
            std::fflush(stderr);
            shown = true;
            wait = milliseconds(200);
        }
        if (shown) {
            std::fputs("\r\033[K", stderr);
            std::fflush(stderr);
        }
    });
    work();
    {
        std::lock_guard lock(mutex);
        done = true;
    }
    finished.notify_one();
    ticker.join();
}

} // namespace CliSupport
