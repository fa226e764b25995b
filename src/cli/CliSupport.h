// SPDX-License-Identifier: MIT
#pragma once

#include "models/InstalledApp.h"
#include "models/LeftoverItem.h"
#include "models/OrphanedAppGroup.h"

#include <QCommandLineParser>
#include <QJsonObject>
#include <QStringList>

#include <functional>
#include <optional>

namespace CliSupport {

// The JSON shapes of the command-line interface.
[[nodiscard]] QJsonObject appJson(const InstalledApp &app);
[[nodiscard]] QJsonObject ownerJson(const ItemOwner &owner);
[[nodiscard]] QJsonObject itemJson(const LeftoverItem &item);
[[nodiscard]] QJsonObject groupJson(const OrphanedAppGroup &group);

// Names, paths and notes come from files and the network. On a terminal their control characters (C0,
// DEL, C1) and the bidirectional overrides are shown as escapes (\x1B, \u009B, \u202E), so none can
// clear the screen, retitle the window, move the cursor or hide text. keepLineBreaks leaves "\n" for
// text of several lines.
[[nodiscard]] QString terminalSafe(const QString &text, bool keepLineBreaks = false);

// Human output goes through terminalSafe (line breaks kept); JSON escapes control characters itself.
void printJson(const QJsonObject &object);
void printLine(const QString &text);
void printError(const QString &text);

// The columns a terminal gives text: wide (East Asian) characters and emoji take two, combining marks
// none, a grapheme cluster no more than its widest character.
[[nodiscard]] qsizetype displayWidth(const QString &text);

// Rows of cells printed with each column padded to its widest cell by display width; the last column is
// not padded. Every cell is made terminalSafe, line breaks included.
void printTable(const QList<QStringList> &rows);

// "1 item", "2 items": the count with the word that agrees with it.
[[nodiscard]] QString countText(qsizetype count, const QString &singular, const QString &plural);
[[nodiscard]] QString itemCountText(qsizetype count);

// A closed standard stream would be handed to the next file opened, and output or messages would land
// in that file: each closed one is pointed at the null device. False when standard output was closed.
[[nodiscard]] bool claimStandardStreams();
// The exit code once the output is written: code, or 1 with a message on stderr when any write to
// standard output failed (a full disk, a closed pipe end).
[[nodiscard]] int finish(int code);

// Parses a command's own options after adding --help. Returns the exit code when the command is to stop
// here: 0 once --help has printed the command's help, 2 after a usage error.
[[nodiscard]] std::optional<int> parse(QCommandLineParser &parser, const QString &command, const QStringList &arguments,
                                       int minimumPositional, int maximumPositional);
// The parser's descriptions of its options under the usage line of command, or of the program itself when
// command is empty, which adds the list of commands.
void printHelp(const QCommandLineParser &parser, const QString &command = QString());
// One line naming the mistake, and where to read the usage; returns the usage error's exit code, 2.
[[nodiscard]] int usageError(const QString &command, const QString &message);

// Runs work; on a terminal (never in JSON mode, never on a pipe) shows "text" with the elapsed time on
// stderr once it has taken longer than a moment, and clears the line at the end.
void runWithProgress(const QString &text, bool enabled, const std::function<void()> &work);

} // namespace CliSupport
