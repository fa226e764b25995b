// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// Runs an external program to its end and returns what it printed. Blocking: call it off the main
// thread. Every failure (cannot start, non-zero exit, too much output, output that is not UTF-8,
// time-out) gives absent; nothing is reported.
namespace CommandRunner {

// Standard output beyond this many bytes is discarded whole.
inline constexpr qint64 outputLimit = 10000000;

// timeoutMs < 0 waits for as long as the program runs.
[[nodiscard]] std::optional<QString> run(const QString &executable, const QStringList &arguments,
                                         int timeoutMs = -1);

} // namespace CommandRunner
