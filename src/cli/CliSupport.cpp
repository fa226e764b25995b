// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"

#include "models/RecordFields.h"

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
    return RecordFields::json(app);
}

QJsonObject ownerJson(const ItemOwner &owner)
{
    return RecordFields::json(owner);
}

QJsonObject itemJson(const LeftoverItem &item)
{
    return RecordFields::json(item);
}

QJsonObject groupJson(const OrphanedAppGroup &group)
{
    return RecordFields::json(group);
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

struct CommandHelp {
    const char *name;
    const char *synopsis;
    const char *summary;
};

// The same lines open `kestrune-cli --help` and each command's own help.
constexpr CommandHelp commandHelps[] = {
    {"apps", "apps [--json]", "List the installed apps, in display order."},
    {"scan", "scan TARGET [--why] [--json]", "Find the leftovers of one app."},
    {"orphans", "orphans [--all] [--json]", "List the leftovers of removed apps."},
    {"remove", "remove TARGET | --orphan ID [--dry-run] [--yes] [--include-claimed] [--json]",
     "Move an app and its leftovers, or the leftovers of a removed app, to the Trash."},
    {"restore", "restore PATH... [--json]", "Put back the newest Trash entry of each path, where the path is free."},
    {"size", "size PATH [--limit N]", "Print the byte count of a file or folder."},
    {"check-update", "check-update [--feed URL] [--json]", "Ask the release feed whether a newer version exists."},
};

QString invocation(const QString &command)
{
    return command.isEmpty() ? QStringLiteral("kestrune-cli") : QStringLiteral("kestrune-cli ") + command;
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

void printHelp(const QCommandLineParser &parser, const QString &command)
{
    const auto help = std::find_if(std::cbegin(commandHelps), std::cend(commandHelps),
                                   [&command](const CommandHelp &entry) { return command == QLatin1String(entry.name); });
    // Qt's first line names the executable's path and knows nothing of the global options: ours instead.
    const QString helpText = parser.helpText();
    const QString synopsis = help != std::cend(commandHelps) ? QString::fromUtf8(help->synopsis) : QStringLiteral("COMMAND [options]");
    printLine(QStringLiteral("Usage: kestrune-cli [--root DIR] [--home DIR] ") + synopsis);
    if (help != std::cend(commandHelps))
        printLine(QString::fromUtf8(help->summary));
    printLine(QString());
    printLine(helpText.sliced(helpText.indexOf(QLatin1Char('\n')) + 1).trimmed());
    if (!command.isEmpty())
        return;
    printLine(QStringLiteral("\nCommands:"));
    for (const CommandHelp &entry : commandHelps)
        printLine(QStringLiteral("  %1\n      %2").arg(QString::fromUtf8(entry.synopsis), QString::fromUtf8(entry.summary)));
    printLine(QStringLiteral("\nRun 'kestrune-cli COMMAND --help' for the options of one command."));
}

int usageError(const QString &command, const QString &message)
{
    printError(invocation(command) + QStringLiteral(": ") + message);
    printError(QStringLiteral("Try '%1 --help'.").arg(invocation(command)));
    return 2;
}

std::optional<int> parse(QCommandLineParser &parser, const QString &command, const QStringList &arguments,
                         int minimumPositional, int maximumPositional)
{
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help."));
    parser.addOption(help);
    if (!parser.parse(QStringList{invocation(command)} + arguments))
        return usageError(command, parser.errorText());
    if (parser.isSet(help)) {
        printHelp(parser, command);
        return 0;
    }
    const QStringList positional = parser.positionalArguments();
    if (positional.size() < minimumPositional)
        return usageError(command, QStringLiteral("missing argument"));
    if (positional.size() > maximumPositional)
        return usageError(command, QStringLiteral("unexpected argument \"%1\"").arg(positional.value(maximumPositional)));
    return std::nullopt;
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
