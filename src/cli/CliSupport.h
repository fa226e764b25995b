// SPDX-License-Identifier: MIT
#pragma once

#include "models/InstalledApp.h"
#include "models/LeftoverItem.h"
#include "models/OrphanedAppGroup.h"

#include <QCommandLineParser>
#include <QJsonObject>
#include <QStringList>

#include <functional>

namespace CliSupport {

// The JSON shapes of the command-line interface.
[[nodiscard]] QJsonObject appJson(const InstalledApp &app);
[[nodiscard]] QJsonObject ownerJson(const ItemOwner &owner);
[[nodiscard]] QJsonObject itemJson(const LeftoverItem &item);
[[nodiscard]] QJsonObject groupJson(const OrphanedAppGroup &group);

void printJson(const QJsonObject &object);
void printLine(const QString &text);
void printError(const QString &text);

// Rows of cells printed with each column padded to its widest cell; the last column is not padded.
void printTable(const QList<QStringList> &rows);

// Parses a command's own options. On --help prints usage and exits 0; on an unknown option or a wrong
// number of positional arguments prints the message and usage to stderr and returns false (exit 2).
[[nodiscard]] bool parse(QCommandLineParser &parser, const QString &command, const QStringList &arguments,
                         int minimumPositional, int maximumPositional);
void printUsage(FILE *stream);

// Runs work; on a terminal (never in JSON mode, never on a pipe) shows "text" with the elapsed time on
// stderr once it has taken longer than a moment, and clears the line at the end.
void runWithProgress(const QString &text, bool enabled, const std::function<void()> &work);

} // namespace CliSupport
