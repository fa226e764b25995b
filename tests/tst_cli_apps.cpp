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

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        m_root = m_folder.path();
        m_home = m_root + QStringLiteral("/Users/ann");
        TestSupport::writeApp(m_root + QStringLiteral("/Applications/Go.app"), QStringLiteral("Go"), QStringLiteral("com.example.Go"), 1500);
        TestSupport::writeFile(m_home + QStringLiteral("/Applications/anon.app/x"), QByteArray(10, 'a'));
    }

    void appsJson()
    {
        const Run result = runCli({QStringLiteral("--root"), m_root, QStringLiteral("--home"), m_home, QStringLiteral("apps"), QStringLiteral("--json")});
        QCOMPARE(result.exitCode, 0);
        const QJsonArray apps = QJsonDocument::fromJson(result.out).object().value(QStringLiteral("apps")).toArray();
        QCOMPARE(apps.size(), 2);
        const QJsonObject anon = apps.at(0).toObject();
        const QJsonObject go = apps.at(1).toObject();
        const QString goPath = m_root + QStringLiteral("/Applications/Go.app");
        QCOMPARE(go.value(QStringLiteral("id")).toString(), goPath);
        QCOMPARE(go.value(QStringLiteral("path")).toString(), goPath);
        QCOMPARE(go.value(QStringLiteral("name")).toString(), QStringLiteral("Go"));
        QCOMPARE(go.value(QStringLiteral("bundleIdentifier")).toString(), QStringLiteral("com.example.Go"));
        QVERIFY(go.value(QStringLiteral("size")).isDouble());
        QCOMPARE(go.value(QStringLiteral("formattedSize")).toString(), QStringLiteral("2 KB"));
        QCOMPARE(anon.value(QStringLiteral("name")).toString(), QStringLiteral("anon"));
        QVERIFY(anon.value(QStringLiteral("bundleIdentifier")).isNull());
        QCOMPARE(anon.value(QStringLiteral("size")).toInteger(), 10);
        QCOMPARE(anon.value(QStringLiteral("formattedSize")).toString(), QStringLiteral("10 bytes"));
    }

    // Sizes and --limit through the command are tst_filesizecalculator's unreadable-folder and
    // bind-mount cases.
    void sizeOfNothingFails()
    {
        const Run result = runCli({QStringLiteral("size"), m_root + QStringLiteral("/nothing-here")});
        QCOMPARE(result.exitCode, 1);
        QVERIFY(!result.err.isEmpty());
    }

    // One row per refusal the parser and the commands make.
    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("unknown command") << QStringList{QStringLiteral("frobnicate")};
        QTest::newRow("no command") << QStringList{};
        QTest::newRow("unknown flag") << QStringList{QStringLiteral("apps"), QStringLiteral("--jsn")};
        QTest::newRow("extra argument") << QStringList{QStringLiteral("apps"), QStringLiteral("extra")};
        QTest::newRow("missing argument") << QStringList{QStringLiteral("size")};
        QTest::newRow("negative limit") << QStringList{QStringLiteral("size"), QStringLiteral("/"), QStringLiteral("--limit"), QStringLiteral("-1")};
        QTest::newRow("word limit") << QStringList{QStringLiteral("size"), QStringLiteral("/"), QStringLiteral("--limit"), QStringLiteral("many")};
    }
    void usageErrors()
    {
        QFETCH(QStringList, arguments);
        const Run result = runCli(arguments);
        QCOMPARE(result.exitCode, 2);
        QVERIFY(result.out.isEmpty());
        QVERIFY(result.err.contains("Usage:"));
    }

private:
    QTemporaryDir m_folder;
    QString m_root;
    QString m_home;
};

QTEST_GUILESS_MAIN(CliAppsTest)
#include "tst_cli_apps.moc"
