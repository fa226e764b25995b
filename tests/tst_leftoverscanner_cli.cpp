// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

// kestrune-cli scan, end to end: target resolution, the JSON and the exit codes. Which files a scan
// finds, and passing over unreadable folders, are the scanner's and the size walk's own tests.
class LeftoverScanCliTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;
    QString m_home;

private Q_SLOTS:
    void initTestCase()
    {
        m_root = m_dir.path() + QStringLiteral("/mac");
        m_home = m_root + QStringLiteral("/Users/ann");
        TestSupport::writeApp(m_root + QStringLiteral("/Applications/Twin.app"), QStringLiteral("Twin"), QStringLiteral("com.a.twin"));
        TestSupport::writeApp(m_home + QStringLiteral("/Applications/Twin Copy.app"), QStringLiteral("twin"), QStringLiteral("com.b.twin"));
        TestSupport::writeApp(m_root + QStringLiteral("/Applications/Solo.app"), QStringLiteral("Solo"), QStringLiteral("com.example.Solo"));
        TestSupport::writeFile(m_home + QStringLiteral("/Library/Caches/com.example.Solo/db"), "12345678");
        TestSupport::writeFile(m_root + QStringLiteral("/Library/LaunchDaemons/com.example.Solo.plist"), "broken");
    }

    // "@" stands for the root, "%" for the folder around it. A path need not be installed, nor exist:
    // without a bundle to read, only name matches remain. No match, or several: exit 1, nothing on
    // stdout and the candidates on stderr.
    void scan_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QStringList>("expected"); // the bundle and the items' names, or what stderr names
        QTest::addColumn<QString>("summary"); // how the text output counts the items
        const QStringList solo = {"@/Applications/Solo.app", "Solo.app", "com.example.Solo.plist", "com.example.Solo"};
        QTest::newRow("name, any case") << "sOLO" << solo << "3 items, ";
        QTest::newRow("identifier, any case") << "COM.EXAMPLE.solo" << solo << "3 items, ";
        QTest::newRow("identifier picks one twin") << "com.b.twin" << QStringList{"@/Users/ann/Applications/Twin Copy.app", "Twin Copy.app"} << "1 item, ";
        QTest::newRow("not there") << "%/gone/Solo.app" << QStringList{"%/gone/Solo.app", "com.example.Solo"} << "1 item, ";
        QTest::newRow("unknown") << "Nothing Like It" << QStringList{"Nothing Like It"} << QString();
        QTest::newRow("ambiguous name") << "TWIN" << QStringList{"com.a.twin", "com.b.twin", "Twin Copy.app"} << QString();
        QTest::newRow("partial name") << "Sol" << QStringList{"Sol"} << QString();
    }
    void scan()
    {
        QFETCH(QString, target);
        QFETCH(QStringList, expected);
        QFETCH(QString, summary);
        target.replace(QLatin1Char('%'), m_dir.path());
        expected.replaceInStrings(QStringLiteral("@"), m_root).replaceInStrings(QStringLiteral("%"), m_dir.path());
        const QStringList arguments{QStringLiteral("--root"), m_root, QStringLiteral("--home"), m_home, QStringLiteral("scan"), target};
        const TestSupport::Run run = TestSupport::runCli(arguments + QStringList{QStringLiteral("--json")});
        if (!expected.constFirst().startsWith(QLatin1Char('/'))) {
            QVERIFY(run.exitCode == 1 && run.out.isEmpty());
            for (const QString &text : expected)
                QVERIFY2(QString::fromUtf8(run.err).contains(text), run.err.constData());
            return;
        }
        QCOMPARE(run.exitCode, 0);
        const QJsonDocument result = QJsonDocument::fromJson(run.out);
        const QJsonValue app = result[u"app"];
        QVERIFY(app[u"id"].isString() && app[u"name"].isString() && app[u"size"].isDouble() && app[u"formattedSize"].isString());
        QCOMPARE(app[u"bundleIdentifier"].isNull(), target.contains(QLatin1String("gone")));
        QStringList found{app[u"path"].toString()};
        qint64 total = 0;
        for (const QJsonValue item : result[u"items"].toArray()) {
            found.append(item[u"name"].toString());
            total += item[u"size"].toInteger();
            QVERIFY(item[u"id"].isString() && item[u"path"].isString() && item[u"category"].isString() && item[u"size"].isDouble()
                    && item[u"formattedSize"].isString() && item[u"requiresAdmin"].isBool());
        }
        QCOMPARE(found, expected);
        QCOMPARE(result[u"totalSize"].toInteger(), total);
        QVERIFY(result[u"formattedTotalSize"].isString());
        const QByteArray text = TestSupport::runCli(arguments).out;
        QVERIFY2(text.mid(text.lastIndexOf("\n", text.size() - 2) + 1).startsWith(summary.toUtf8()), text.constData());
    }
};

QTEST_GUILESS_MAIN(LeftoverScanCliTest)
#include "tst_leftoverscanner_cli.moc"
