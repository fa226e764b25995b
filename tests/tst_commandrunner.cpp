// SPDX-License-Identifier: MIT
#include "platform/CommandRunner.h"

#include <QElapsedTimer>
#include <QTest>

class CommandRunnerTest : public QObject
{
    Q_OBJECT

    static std::optional<QString> shell(const QString &script, int timeoutMs = -1)
    {
        return CommandRunner::run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}, timeoutMs);
    }

private Q_SLOTS:
    void outputCap()
    {
        const QString bytes = QStringLiteral("head -c %1 /dev/zero | tr '\\0' a");
        QCOMPARE(shell(bytes.arg(CommandRunner::outputLimit)).value_or(QString()).size(), CommandRunner::outputLimit);
        QCOMPARE(shell(bytes.arg(CommandRunner::outputLimit + 1)), std::nullopt);
    }

    void failuresAreAbsent_data()
    {
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("missing program") << "/nonexistent/mdfind" << QStringList();
        QTest::newRow("non-zero exit with output") << "/bin/sh" << QStringList{"-c", "echo found; exit 3"};
        QTest::newRow("killed by a signal") << "/bin/sh" << QStringList{"-c", "echo found; kill -9 $$"};
        QTest::newRow("not UTF-8") << "/bin/sh" << QStringList{"-c", "printf '/tmp/\\377\\n'"};
    }
    void failuresAreAbsent()
    {
        QFETCH(QString, executable);
        QFETCH(QStringList, arguments);
        QCOMPARE(CommandRunner::run(executable, arguments), std::nullopt);
    }

    void argumentsAndTextArriveIntact()
    {
        const QString query = QStringLiteral("kMDItemCFBundleIdentifier == 'com.example.Ünï'");
        QCOMPARE(CommandRunner::run(QStringLiteral("/bin/printf"), {QStringLiteral("%s\\n"), query}),
                 std::optional<QString>(query + QLatin1Char('\n')));
    }

    // Far beyond any pipe buffer, on both channels, with the result printed last.
    void standardErrorFloodDoesNotBlock()
    {
        const auto output = shell(QStringLiteral("head -c 30000000 /dev/zero >&2; head -c 300000 /dev/zero | tr '\\0' b; echo done"), 60000);
        QVERIFY(output && output->endsWith(QStringLiteral("bdone\n")));
    }

    void timeout()
    {
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(shell(QStringLiteral("echo early; sleep 30"), 300), std::nullopt);
        // Closing its output does not end the wait: the exit does.
        QCOMPARE(shell(QStringLiteral("exec >&-; sleep 30"), 300), std::nullopt);
        QVERIFY(timer.elapsed() < 10000);
    }
};

QTEST_GUILESS_MAIN(CommandRunnerTest)
#include "tst_commandrunner.moc"
