// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using TestSupport::runCli;
using TestSupport::Run;

class CliAppsTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    void appsJson()
    {
        const QString go = m_dir.path() + QStringLiteral("/Applications/Go.app"), anon = m_dir.path() + QStringLiteral("/Users/ann/Applications/anon.app");
        TestSupport::writeApp(go, QStringLiteral("Go"), QStringLiteral("com.example.Go"), 1500);
        TestSupport::writeFile(anon + QStringLiteral("/x"), QByteArray(10, 'a'));
        const Run result = runCli({QStringLiteral("--root"), m_dir.path(), QStringLiteral("--home"), m_dir.path() + QStringLiteral("/Users/ann"),
                                   QStringLiteral("apps"), QStringLiteral("--json")});
        QCOMPARE(result.exitCode, 0);
        const QJsonArray apps = QJsonDocument::fromJson(result.out)[u"apps"].toArray();
        QCOMPARE(apps.size(), 2);
        QVERIFY(apps[1][u"size"].toInteger() > 1500);
        QCOMPARE(apps[1].toObject(), (QJsonObject{{"id", go}, {"path", go}, {"name", "Go"}, {"bundleIdentifier", "com.example.Go"},
                                                  {"size", apps[1][u"size"]}, {"formattedSize", "2 KB"}}));
        QCOMPARE(apps[0].toObject(), (QJsonObject{{"id", anon}, {"path", anon}, {"name", "anon"}, {"bundleIdentifier", QJsonValue::Null},
                                                  {"size", 10}, {"formattedSize", "10 bytes"}}));
    }

    // Table columns line up by the width a terminal draws, not by the count of UTF-16 units; the count
    // agrees with its noun.
    void appsTable_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QList<int>>("widths"); // terminal columns of each name
        QTest::addColumn<QString>("summary");
        QTest::newRow("one app") << QStringList{"Solo"} << QList<int>{4} << "1 app";
        QTest::newRow("wide, emoji, combining") << QStringList{"Go", QStringLiteral("メモ帳"), QStringLiteral("😀 Smile"), QStringLiteral("Cafe\u0301")}
                                                << QList<int>{2, 6, 8, 4} << "4 apps";
    }
    void appsTable()
    {
        QFETCH(QStringList, names);
        QFETCH(QList<int>, widths);
        QFETCH(QString, summary);
        QTemporaryDir dir;
        for (qsizetype index = 0; index < names.size(); ++index)
            TestSupport::writeApp(dir.path() + QStringLiteral("/Applications/%1.app").arg(index), names[index], QStringLiteral("com.example.a%1").arg(index));
        TestSupport::makeFolder(dir.path() + QStringLiteral("/home"));
        const Run result = runCli({QStringLiteral("--root"), dir.path(), QStringLiteral("--home"), dir.path() + QStringLiteral("/home"), QStringLiteral("apps")});
        QCOMPARE(result.exitCode, 0);
        const QString out = QLatin1Char('\n') + QString::fromUtf8(result.out);
        QVERIFY2(out.endsWith(QLatin1Char('\n') + summary + QLatin1Char('\n')), qPrintable(out));
        // Each name is followed by enough spaces to start the next column at the same terminal column.
        const int column = *std::max_element(widths.cbegin(), widths.cend()) + 2;
        for (qsizetype index = 0; index < names.size(); ++index) {
            const QRegularExpression row(QStringLiteral("\n%1 {%2}\\S").arg(QRegularExpression::escape(names[index])).arg(column - widths[index]));
            QVERIFY2(out.contains(row), qPrintable(names[index] + out));
        }
    }

    // A usage error is one line and a hint where help is to be had; other refusals say only what is wrong.
    void refusals_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("hint"); // the second line of stderr, for usage errors
        const QString global = QStringLiteral("Try 'kestrune-cli --help'."), apps = QStringLiteral("Try 'kestrune-cli apps --help'."),
                      size = QStringLiteral("Try 'kestrune-cli size --help'.");
        QTest::newRow("unknown command") << QStringList{"frobnicate"} << 2 << global;
        QTest::newRow("no command") << QStringList{} << 2 << global;
        QTest::newRow("root not a folder") << QStringList{"--root", "/dev/null", "apps"} << 2 << global;
        QTest::newRow("unknown flag") << QStringList{"apps", "--jsn"} << 2 << apps;
        QTest::newRow("extra argument") << QStringList{"apps", "extra"} << 2 << apps;
        QTest::newRow("missing argument") << QStringList{"size"} << 2 << size;
        QTest::newRow("bad limit") << QStringList{"size", "/", "--limit", "-1"} << 2 << size;
        QTest::newRow("bad feed") << QStringList{"check-update", "--feed", "file:///etc/passwd"} << 2 << "Try 'kestrune-cli check-update --help'.";
        // Sizes and --limit through the command are tst_filesizecalculator's unreadable-folder and
        // bind-mount cases.
        QTest::newRow("size of nothing") << QStringList{"size", m_dir.path() + "/nothing-here"} << 1 << QString();
    }
    void refusals()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, hint);
        const Run result = runCli(arguments);
        QCOMPARE(result.exitCode, exitCode);
        QVERIFY(result.out.isEmpty());
        const QStringList lines = QString::fromUtf8(result.err).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), hint.isEmpty() ? 1 : 2);
        QCOMPARE(lines.value(1), hint);
    }

    // Each command's help has its own usage line and a description of every option; the program's own
    // lists the commands.
    void help_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("usage");
        QTest::addColumn<QStringList>("described");
        const QString prefix = QStringLiteral("Usage: kestrune-cli [--root DIR] [--home DIR] ");
        QTest::newRow("program") << QStringList{"--help"} << prefix + "COMMAND [options]" << QStringList{"--root <DIR>", "--home <DIR>", "--version"};
        QTest::newRow("scan") << QStringList{"scan", "--help"} << prefix + "scan TARGET [--why] [--json]" << QStringList{"--why", "--json", "TARGET"};
        QTest::newRow("remove") << QStringList{"remove", "-h"} << prefix + "remove TARGET | --orphan ID [--dry-run] [--yes] [--include-claimed] [--json]"
                                << QStringList{"--orphan <ID>", "--dry-run", "--yes", "--include-claimed", "TARGET"};
        QTest::newRow("size") << QStringList{"size", "--help"} << prefix + "size PATH [--limit N]" << QStringList{"--limit <N>", "PATH"};
    }
    void help()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, usage);
        QFETCH(QStringList, described);
        const Run result = runCli(arguments);
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.err.isEmpty());
        const QString out = QString::fromUtf8(result.out);
        QCOMPARE(out.section(QLatin1Char('\n'), 0, 0), usage);
        for (const QString &name : described) {
            const QRegularExpression line(QStringLiteral("^  (-h, )?%1  +\\S").arg(QRegularExpression::escape(name)), QRegularExpression::MultilineOption);
            QVERIFY2(out.contains(line), qPrintable(name + QStringLiteral(" has no description in\n") + out));
        }
        if (arguments.constFirst() == QLatin1String("--help"))
            QVERIFY(out.contains(QLatin1String("\n  check-update [--feed URL] [--json]\n")));
    }

    // Names come from Info.plists anyone can write: on a terminal their control characters show as
    // escapes (no screen clear, no title change, no carriage return over the line); JSON keeps them.
    void controlCharactersInNames()
    {
        QTemporaryDir dir;
        const QString name = QStringLiteral("Evil\x1b[2J\x1b]0;owned\x07\rFine\u202Etxt.exe\u009b1m");
        TestSupport::writeApp(dir.path() + QStringLiteral("/Applications/Evil.app"), name, QStringLiteral("com.example.\x1b[31mred"));
        TestSupport::makeFolder(dir.path() + QStringLiteral("/Users/ann"));
        const QStringList where{QStringLiteral("--root"), dir.path(), QStringLiteral("--home"), dir.path() + QStringLiteral("/Users/ann")};
        const Run human = runCli(where + QStringList{QStringLiteral("apps")});
        QCOMPARE(human.exitCode, 0);
        for (const char *raw : {"\x1b", "\x07", "\r", "\u202E", "\u009b"})
            QVERIFY2(!QString::fromUtf8(human.out).contains(QString::fromUtf8(raw)), raw);
        QVERIFY2(human.out.contains(R"(Evil\x1B[2J\x1B]0;owned\x07\x0DFine\u202Etxt.exe\u009B1m)"), human.out.constData());
        QVERIFY(human.out.contains(R"(com.example.\x1B[31mred)"));
        const Run json = runCli(where + QStringList{QStringLiteral("apps"), QStringLiteral("--json")});
        QCOMPARE(QJsonDocument::fromJson(json.out)[u"apps"][0][u"name"].toString(), name);
    }

    // Output that cannot be written is a failure, said on stderr; a closed stdout stops the command
    // before it does anything.
    void writeFailures_data()
    {
        QTest::addColumn<QString>("redirection");
        QTest::addColumn<QStringList>("arguments");
        const QStringList apps{QStringLiteral("apps"), QStringLiteral("--json")};
        QTest::newRow("full disk, json") << ">/dev/full" << apps;
        QTest::newRow("full disk, table") << ">/dev/full" << QStringList{QStringLiteral("apps")};
        QTest::newRow("full disk, help") << ">/dev/full" << QStringList{QStringLiteral("apps"), QStringLiteral("--help")};
        QTest::newRow("closed, json") << ">&-" << apps;
        QTest::newRow("closed, size") << ">&-" << QStringList{QStringLiteral("size"), QStringLiteral("/dev/null")};
    }
    void writeFailures()
    {
        QFETCH(QString, redirection);
        QFETCH(QStringList, arguments);
        QTemporaryDir dir;
        const QStringList where{QStringLiteral("--root"), dir.path(), QStringLiteral("--home"), dir.path()};
        const Run result = TestSupport::runProgram(QStringLiteral("/bin/sh"), QStringList{QStringLiteral("-c"), QStringLiteral("exec \"$0\" \"$@\" ") + redirection,
                                                                                         QStringLiteral(KESTRUNE_BINARY_DIR "/src/cli/kestrune-cli")} + where + arguments);
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.err.contains("output"), result.err.constData());
    }
};

QTEST_GUILESS_MAIN(CliAppsTest)
#include "tst_cli_apps.moc"
