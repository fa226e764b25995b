// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using TestSupport::Run;

// kestrune-cli scan, end to end: target resolution, the output and the exit codes. Which files a scan
// finds, and passing over unreadable folders, are the scanner's and the size walk's own tests.
class LeftoverScanCliTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;
    QString m_home;

    Run cli(const QStringList &arguments) const
    {
        return TestSupport::runCli(QStringList{QStringLiteral("--root"), m_root, QStringLiteral("--home"), m_home} + arguments);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_root = m_dir.path() + QStringLiteral("/mac");
        m_home = m_root + QStringLiteral("/Users/ann");
        TestSupport::writeApp(m_root + QStringLiteral("/Applications/Twin.app"), QStringLiteral("Twin"), QStringLiteral("com.a.twin"));
        TestSupport::writeApp(m_home + QStringLiteral("/Applications/Twin Copy.app"), QStringLiteral("twin"), QStringLiteral("com.b.twin"));
        TestSupport::writeApp(m_root + QStringLiteral("/Applications/Solo.app"), QStringLiteral("Solo"), QStringLiteral("com.example.Solo"));
        TestSupport::writeFile(m_home + QStringLiteral("/Library/Caches/com.example.Solo/db"), "12345678");
        TestSupport::writeFile(m_root + QStringLiteral("/Library/LaunchDaemons/com.example.Solo.plist"), "broken");
    }

    void resolvesTargets_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("bundlePath");
        QTest::newRow("name, any case") << "sOLO" << "/Applications/Solo.app";
        QTest::newRow("identifier, any case") << "COM.EXAMPLE.solo" << "/Applications/Solo.app";
        QTest::newRow("installed path") << "@/Applications/Solo.app" << "/Applications/Solo.app";
        QTest::newRow("path with trailing slash") << "@/Applications/Solo.app/" << "/Applications/Solo.app";
        QTest::newRow("identifier picks one twin") << "com.b.twin" << "/Users/ann/Applications/Twin Copy.app";
    }
    void resolvesTargets()
    {
        QFETCH(QString, target);
        QFETCH(QString, bundlePath);
        target.replace(QLatin1Char('@'), m_root);
        const Run run = cli({QStringLiteral("scan"), target, QStringLiteral("--json")});
        QCOMPARE(run.exitCode, 0);
        const QJsonObject result = QJsonDocument::fromJson(run.out).object();
        QCOMPARE(result.value("app").toObject().value("path").toString(), m_root + bundlePath);
        const QJsonArray items = result.value("items").toArray();
        QCOMPARE(items.first().toObject().value("category").toString(), QStringLiteral("Application"));
        qint64 total = 0;
        for (const QJsonValue &item : items)
            total += item.toObject().value("size").toInteger();
        QCOMPARE(result.value("totalSize").toInteger(), total);
    }

    void pathsNeedNotBeInstalled()
    {
        // Not in an applications folder, and then not there at all: the leftovers are found by file name.
        const QString elsewhere = m_dir.path() + QStringLiteral("/elsewhere/Solo.app");
        TestSupport::writeApp(elsewhere, QStringLiteral("Solo"), QStringLiteral("com.example.Solo"));
        Run run = cli({QStringLiteral("scan"), elsewhere, QStringLiteral("--json")});
        QCOMPARE(run.exitCode, 0);
        // The bundle, the cache and the daemon list (unreadable, matched by its file name).
        QCOMPARE(QJsonDocument::fromJson(run.out).object().value("items").toArray().size(), 3);

        run = cli({QStringLiteral("scan"), m_dir.path() + QStringLiteral("/gone/Solo.app"), QStringLiteral("--json")});
        QCOMPARE(run.exitCode, 0);
        const QJsonObject result = QJsonDocument::fromJson(run.out).object();
        QCOMPARE(result.value("app").toObject().value("bundleIdentifier"), QJsonValue());
        QCOMPARE(result.value("items").toArray().size(), 1);
        QCOMPARE(result.value("items").toArray().first().toObject().value("name").toString(), QStringLiteral("com.example.Solo"));
    }

    void unresolvedTargetsFail_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QStringList>("mentioned");
        QTest::newRow("unknown") << "Nothing Like It" << QStringList{"Nothing Like It"};
        QTest::newRow("ambiguous name") << "TWIN" << QStringList{"com.a.twin", "com.b.twin", "Twin Copy.app"};
        QTest::newRow("partial name") << "Sol" << QStringList{"Sol"};
    }
    void unresolvedTargetsFail()
    {
        QFETCH(QString, target);
        QFETCH(QStringList, mentioned);
        const Run run = cli({QStringLiteral("scan"), target, QStringLiteral("--json")});
        QCOMPARE(run.exitCode, 1);
        QVERIFY(run.out.isEmpty());
        for (const QString &text : mentioned)
            QVERIFY2(QString::fromUtf8(run.err).contains(text), run.err.constData());
    }

    void humanOutputGroupsByCategory()
    {
        const Run run = cli({QStringLiteral("scan"), QStringLiteral("Solo")});
        QCOMPARE(run.exitCode, 0);
        const QStringList lines = QString::fromUtf8(run.out).split(QLatin1Char('\n'));
        const qsizetype caches = lines.indexOf(QStringLiteral("Caches"));
        const qsizetype daemons = lines.indexOf(QStringLiteral("Launch Daemons"));
        QVERIFY(caches > 0 && daemons > caches);
        QVERIFY(lines.at(caches + 1).endsWith(m_home + QStringLiteral("/Library/Caches/com.example.Solo")));
        QVERIFY(lines.at(caches + 1).contains(QStringLiteral("8 bytes")));
        // Sizes are right-aligned in one column across every section.
        QCOMPARE(lines.at(caches + 1).indexOf(m_home), lines.at(daemons + 1).indexOf(m_root + QStringLiteral("/Library")));
        QVERIFY(std::any_of(lines.cbegin(), lines.cend(), [](const QString &line) { return line.startsWith(QStringLiteral("3 items, ")); }));
    }
};

QTEST_GUILESS_MAIN(LeftoverScanCliTest)
#include "tst_leftoverscanner_cli.moc"
