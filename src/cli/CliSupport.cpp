// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <fcntl.h>
#include <locale.h>
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

namespace {

// The first failed write to standard output; what is left of the output after it is not worth having.
int outputError = 0;

void writeOut(const QByteArray &bytes)
{
    if (outputError != 0)
        return;
    if (std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout) != size_t(bytes.size()))
        outputError = errno != 0 ? errno : EIO;
}

void flushOut()
{
    if (outputError == 0 && std::fflush(stdout) != 0)
        outputError = errno != 0 ? errno : EIO;
}

bool isHidingControl(char16_t c, bool keepLineBreaks)
{
    if (c == u'\n')
        return !keepLineBreaks;
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

} // namespace

QString terminalSafe(const QString &text, bool keepLineBreaks)
{
    const auto hides = [keepLineBreaks](QChar c) { return isHidingControl(c.unicode(), keepLineBreaks); };
    if (std::none_of(text.begin(), text.end(), hides))
        return text;
    QString safe;
    safe.reserve(text.size() + 16);
    for (const QChar c : text) {
        if (!hides(c))
            safe.append(c);
        else if (c.unicode() < 0x80)
            safe.append(QStringLiteral("\\x") + QString::number(c.unicode(), 16).toUpper().rightJustified(2, u'0'));
        else
            safe.append(QStringLiteral("\\u") + QString::number(c.unicode(), 16).toUpper().rightJustified(4, u'0'));
    }
    return safe;
}

void printJson(const QJsonObject &object)
{
    writeOut(QJsonDocument(object).toJson(QJsonDocument::Indented));
    flushOut();
}

void printLine(const QString &text)
{
    writeOut(terminalSafe(text, true).toUtf8() + '\n');
}

void printError(const QString &text)
{
    flushOut();
    const QByteArray bytes = terminalSafe(text, true).toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

bool claimStandardStreams()
{
    bool outputOpen = true;
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(fd, F_GETFD) != -1 || errno != EBADF)
            continue;
        // open() takes the lowest free descriptor, which is this one.
        const int null = ::open("/dev/null", fd == STDIN_FILENO ? O_RDONLY : O_WRONLY);
        if (null != fd && null >= 0)
            ::close(null);
        outputOpen = outputOpen && fd != STDOUT_FILENO;
    }
    return outputOpen;
}

int finish(int code)
{
    flushOut();
    if (outputError == 0)
        return code;
    std::fprintf(stderr, "kestrune-cli: could not write the output: %s\n", std::strerror(outputError));
    return 1;
}

namespace {

// wcwidth answers by the LC_CTYPE locale, and in the "C" locale no character beyond ASCII is printable.
// Display width does not depend on the user's language, so it is asked of a UTF-8 locale whatever the
// environment says.
locale_t utf8Ctype()
{
    static const locale_t locale = [] {
        locale_t found = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t(nullptr));
        return found != locale_t(nullptr) ? found : ::newlocale(LC_CTYPE_MASK, "en_US.UTF-8", locale_t(nullptr));
    }();
    return locale;
}

qsizetype clusterWidth(QStringView cluster)
{
    int width = 0;
    for (const char32_t c : cluster.toUcs4()) {
        // U+FE0F asks for the emoji presentation, which terminals draw two columns wide.
        const int columns = c == 0xFE0F ? 2 : ::wcwidth(wchar_t(c));
        width = std::max(width, columns < 0 ? 1 : columns);
    }
    return width;
}

QString padded(const QString &cell, qsizetype width)
{
    return cell + QString(std::max<qsizetype>(0, width - displayWidth(cell)), u' ');
}

} // namespace

qsizetype displayWidth(const QString &text)
{
    if (std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() < 0x7F; }))
        return text.size();
    const locale_t previous = ::uselocale(utf8Ctype());
    qsizetype width = 0;
    QTextBoundaryFinder clusters(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype start = 0, end = clusters.toNextBoundary(); end != -1; start = end, end = clusters.toNextBoundary())
        width += clusterWidth(QStringView(text).sliced(start, end - start));
    ::uselocale(previous);
    return width;
}

void printTable(const QList<QStringList> &rows)
{
    QList<QStringList> safeRows;
    safeRows.reserve(rows.size());
    QList<qsizetype> widths;
    for (const QStringList &row : rows) {
        QStringList safe;
        for (const QString &cell : row) {
            safe.append(terminalSafe(cell));
            if (widths.size() < safe.size())
                widths.append(0);
            widths[safe.size() - 1] = std::max(widths[safe.size() - 1], displayWidth(safe.constLast()));
        }
        safeRows.append(safe);
    }
    for (const QStringList &row : std::as_const(safeRows)) {
        QString line;
        for (qsizetype column = 0; column + 1 < row.size(); ++column)
            line += padded(row[column], widths[column]) + QStringLiteral("  ");
        printLine(line + row.value(row.size() - 1));
    }
}

QString countText(qsizetype count, const QString &singular, const QString &plural)
{
    return QString::number(count) + QLatin1Char(' ') + (count == 1 ? singular : plural);
}

QString itemCountText(qsizetype count)
{
    return countText(count, QStringLiteral("item"), QStringLiteral("items"));
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
        "  restore PATH... [--json]           put back the newest Trash entry of each path, where it is free\n"
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
        std::exit(finish(0));
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
