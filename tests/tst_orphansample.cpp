// SPDX-License-Identifier: MIT
// The removed-app scan over a generated sample Mac, held to the generator's own expectations, which
// carry most of the grade rules; the rest of the grades, order, non-UTF-8 names and the literal reading
// are tst_orphanrules' and tst_orphanscan's cases; the groups as the command line shows them are
// tst_cli_reference's.
#include "TestSupport.h"
#include "services/AppDiscoveryService.h"
#include "services/OrphanedLeftoverScannerService.h"
#include "platform/FileSystem.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace TestSupport;

class TestOrphanSample : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;
    QList<OrphanedAppGroup> m_groups;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_root = m_dir.path() + QStringLiteral("/mac");
        QString log;
        QVERIFY2(generateSampleMac(m_root, 7, QStringLiteral("small"), &log), qPrintable(log));
        useLayout(m_root, sampleHome(m_root));
        m_groups = OrphanedLeftoverScannerService::scan().result();
    }

    // No group is a system entry or an installed app's, and no item is offered twice.
    void nothingThatMustStay()
    {
        const QJsonDocument expected = QJsonDocument::fromJson(readBytes(m_root + QStringLiteral("/.kestrune-expected-orphans.json")));
        const QStringList never = expected[u"never"].toVariant().toStringList();
        const QList<InstalledApp> apps = AppDiscoveryService::discoverInstalledApps();
        QVERIFY(apps.size() > 5 && !never.isEmpty());
        QSet<QString> paths;
        for (const OrphanedAppGroup &group : std::as_const(m_groups)) {
            QVERIFY2(!never.contains(group.id, Qt::CaseInsensitive), qPrintable(group.id));
            for (const InstalledApp &app : apps) {
                const QString installed = app.bundleIdentifier.value_or(QStringLiteral("\n"));
                QVERIFY2(group.displayName.compare(app.name, Qt::CaseInsensitive) != 0 && group.id.compare(installed, Qt::CaseInsensitive) != 0
                             && !group.id.startsWith(installed + u'.', Qt::CaseInsensitive), qPrintable(group.id));
            }
            for (const LeftoverItem &item : group.items) {
                QVERIFY2(!item.name().startsWith(QLatin1String("com.apple")) && FileSystem::exists(item.path()) && !paths.contains(item.path()),
                         qPrintable(item.path()));
                paths.insert(item.path());
            }
        }
    }

    // Every group the generator meant to leave, with its grade, evidence and name.
    void everyExpectedGroup()
    {
        const QJsonObject expected = QJsonDocument::fromJson(readBytes(m_root + QStringLiteral("/.kestrune-expected-orphans.json")))[u"expected"].toObject();
        QVERIFY(expected.contains(u"name:vanished backup") && expected.contains(u"com.vanished.scripted"));
        for (auto it = expected.constBegin(); it != expected.constEnd(); ++it) {
            const auto group = std::find_if(m_groups.cbegin(), m_groups.cend(), [&](const OrphanedAppGroup &g) { return g.id == it.key(); });
            QVERIFY2(group != m_groups.cend(), qPrintable(it.key()));
            const QJsonValue want = it.value();
            QCOMPARE(OrphanConfidences::rawValue(group->confidence), want[u"confidence"].toString());
            QCOMPARE(group->evidenceSummary, want[u"evidenceSummary"].toString());
            QCOMPARE(group->displayName, want[u"displayName"].toString());
        }
    }
};

QTEST_GUILESS_MAIN(TestOrphanSample)
#include "tst_orphansample.moc"
