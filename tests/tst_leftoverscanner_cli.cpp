// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using TestSupport::Run;

// kestrune-cli scan, end to end: target resolution, the JSON and the exit codes. Which files a scan
// finds, and passing over unreadable folders, are the scanner's and the size walk's own tests.
class LeftoverScanCliTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;
    QString m_home;

    Run cli(const QStringList &arguments) const
    {
        return TestSupport::runCli(QStringList{QStringLiteral("--root"), m_root, QStringLiteral("--home"), m_home, QStringLiteral("scan")} + arguments);
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
        TestSupport::writeApp(m_dir.path() + QStringLiteral("/elsewhere/Solo.app"), QStringLiteral("Solo"), QStringLiteral("com.example.Solo"));
        TestSupport::writeFile(m_home + QStringLiteral("/Library/Caches/com.example.Solo/db"), "12345678");
        TestSupport::writeFile(m_root + QStringLiteral("/Library/LaunchDaemons/com.example.Solo.plist"), "broken");
    }

    // "@" stands for the root, "%" for the folder around it. A path need not be installed, nor exist:
    // without a bundle to read, only name matches remain.
    void resolvesTargets_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QStringList>("items");
        const QStringList solo = {"Solo.app", "com.example.Solo.plist", "com.example.Solo"};
        QTest::newRow("name, any case") << "sOLO" << "@/Applications/Solo.app" << solo;
        QTest::newRow("identifier, any case") << "COM.EXAMPLE.solo" << "@/Applications/Solo.app" << solo;
        QTest::newRow("path with trailing slash") << "@/Applications/Solo.app/" << "@/Applications/Solo.app" << solo;
        QTest::newRow("identifier picks one twin") << "com.b.twin" << "@/Users/ann/Applications/Twin Copy.app" << QStringList{"Twin Copy.app"};
        QTest::newRow("not installed") << "%/elsewhere/Solo.app" << "%/elsewhere/Solo.app" << solo;
        QTest::newRow("not there") << "%/gone/Solo.app" << "%/gone/Solo.app" << QStringList{"com.example.Solo"};
    }
    void resolvesTargets()
    {
        QFETCH(QString, target);
        QFETCH(QString, bundle);
        QFETCH(QStringList, items);
        for (QString *text : {&target, &bundle})
            text->replace(QLatin1Char('@'), m_root).replace(QLatin1Char('%'), m_dir.path());
        const Run run = cli({target, QStringLiteral("--json")});
        QCOMPARE(run.exitCode, 0);
        const QJsonDocument result = QJsonDocument::fromJson(run.out);
        const QJsonValue app = result[u"app"];
        QCOMPARE(app[u"path"].toString(), bundle);
        QVERIFY(app[u"id"].isString() && app[u"name"].isString() && app[u"size"].isDouble() && app[u"formattedSize"].isString());
        QCOMPARE(app[u"bundleIdentifier"].isNull(), target.contains(QLatin1String("gone")));
        QStringList names;
        qint64 total = 0;
        for (const QJsonValue item : result[u"items"].toArray()) {
            names.append(item[u"name"].toString());
            total += item[u"size"].toInteger();
            QVERIFY(item[u"id"].isString() && item[u"path"].isString() && item[u"category"].isString() && item[u"size"].isDouble()
                    && item[u"formattedSize"].isString() && item[u"requiresAdmin"].isBool());
        }
        QCOMPARE(names, items);
        QCOMPARE(result[u"totalSize"].toInteger(), total);
        QVERIFY(result[u"formattedTotalSize"].isString());
    }

    // No match, or several: exit 1, nothing on stdout, the candidates on stderr.
    void unresolvedTargetsFail()
    {
        for (const auto &[target, mentioned] : std::initializer_list<std::pair<const char *, QStringList>>{
                 {"Nothing Like It", {"Nothing Like It"}}, {"TWIN", {"com.a.twin", "com.b.twin", "Twin Copy.app"}}, {"Sol", {"Sol"}}}) {
            const Run run = cli({QString::fromUtf8(target), QStringLiteral("--json")});
            QVERIFY2(run.exitCode == 1 && run.out.isEmpty(), target);
            for (const QString &text : mentioned)
                QVERIFY2(QString::fromUtf8(run.err).contains(text), run.err.constData());
        }
    }
};

QTEST_GUILESS_MAIN(LeftoverScanCliTest)
#include "tst_leftoverscanner_cli.moc"
