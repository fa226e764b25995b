// SPDX-License-Identifier: MIT
#include "platform/CommandRunner.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QStringDecoder>

namespace {

void stop(QProcess &process)
{
    process.kill();
    process.waitForFinished(-1);
}

} // namespace

namespace CommandRunner {

std::optional<QString> run(const QString &executable, const QStringList &arguments, int timeoutMs)
{
    QProcess process;
    process.setProgram(executable);
    process.setArguments(arguments);
    // Standard error is never read; sending it to the null device means a flood of it can neither
    // fill a pipe and stall the child nor pile up in our memory.
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(QIODevice::ReadOnly);
    if (!process.waitForStarted(-1))
        return std::nullopt;

    const QDeadlineTimer deadline = timeoutMs < 0 ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(timeoutMs);
    QByteArray output;
    // Drain while the child runs so that a full pipe never blocks it.
    while (process.state() != QProcess::NotRunning) {
        if (!process.waitForReadyRead(int(deadline.remainingTime())) && process.state() != QProcess::NotRunning) {
            // Either the time is up, or the child closed its output and lives on: wait for its end.
            if (deadline.hasExpired() || !process.waitForFinished(int(deadline.remainingTime()))) {
                stop(process);
                return std::nullopt;
            }
        }
        output += process.readAllStandardOutput();
        // Past the cap the answer is discarded anyway; no need to let the child go on.
        if (output.size() > outputLimit) {
            stop(process);
            return std::nullopt;
        }
    }
    output += process.readAllStandardOutput();
    if (output.size() > outputLimit)
        return std::nullopt;
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return std::nullopt;

    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(output);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

} // namespace CommandRunner
