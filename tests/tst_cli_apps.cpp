// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

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

    // Sizes and --limit through the command are tst_filesizecalculator's unreadable-folder and
    // bind-mount cases.
    void sizeOfNothingFails()
    {
        const Run result = runCli({QStringLiteral("size"), m_dir.path() + QStringLiteral("/nothing-here")});
        QVERIFY(result.exitCode == 1 && !result.err.isEmpty());
    }

    // One row per kind of refusal the parser makes.
    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("unknown command") << QStringList{QStringLiteral("frobnicate")};
        QTest::newRow("no command") << QStringList{};
        QTest::newRow("unknown flag") << QStringList{QStringLiteral("apps"), QStringLiteral("--jsn")};
        QTest::newRow("extra argument") << QStringList{QStringLiteral("apps"), QStringLiteral("extra")};
        QTest::newRow("missing argument") << QStringList{QStringLiteral("size")};
        QTest::newRow("bad limit") << QStringList{QStringLiteral("size"), QStringLiteral("/"), QStringLiteral("--limit"), QStringLiteral("-1")};
    }
    void usageErrors()
    {
        QFETCH(QStringList, arguments);
        const Run result = runCli(arguments);
        QCOMPARE(result.exitCode, 2);
        QVERIFY(result.out.isEmpty() && result.err.contains("Usage:"));
    }
};

QTEST_GUILESS_MAIN(CliAppsTest)
#include "tst_cli_apps.moc"
