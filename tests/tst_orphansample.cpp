// SPDX-License-Identifier: MIT
// The removed-app scan over a generated sample Mac, and `kestrune-cli orphans` on it. Group and item
// order, non-UTF-8 names and the literal reading are tst_orphanrules' and tst_orphanscan's cases.
#include "TestSupport.h"
#include "services/AppDiscoveryService.h"
#include "services/OrphanedLeftoverScannerService.h"
#include "platform/FileSystem.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace TestSupport;

class TestOrphanSample : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;
    QList<OrphanedAppGroup> m_groups;
    QJsonObject m_expectations;

    Run cli(const QStringList &arguments) const
    {
        return runCli(QStringList{QStringLiteral("--root"), m_root, QStringLiteral("--home"), sampleHome(m_root)} + arguments);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_root = m_dir.path() + QStringLiteral("/mac");
        QString log;
        QVERIFY2(generateSampleMac(m_root, 7, QStringLiteral("small"), &log), qPrintable(log));
        useLayout(m_root, sampleHome(m_root));
        QFile expectations(m_root + QStringLiteral("/.kestrune-expected-orphans.json"));
        QVERIFY(expectations.open(QIODevice::ReadOnly));
        m_expectations = QJsonDocument::fromJson(expectations.readAll()).object();
        QVERIFY(!m_expectations.value(QStringLiteral("expected")).toObject().isEmpty());
        m_groups = OrphanedLeftoverScannerService::scan().result();
    }

    void expectedGroupsAndGrades()
    {
        const QJsonObject expected = m_expectations.value(QStringLiteral("expected")).toObject();
        for (auto it = expected.begin(); it != expected.end(); ++it) {
            const auto group = std::find_if(m_groups.cbegin(), m_groups.cend(),
                                            [&](const OrphanedAppGroup &g) { return g.id == it.key(); });
            QVERIFY2(group != m_groups.cend(), qPrintable(it.key()));
            const QJsonObject want = it.value().toObject();
            QCOMPARE(OrphanConfidences::rawValue(group->confidence), want.value(QStringLiteral("confidence")).toString());
            QCOMPARE(group->evidenceSummary, want.value(QStringLiteral("evidenceSummary")).toString());
            QCOMPARE(group->displayName, want.value(QStringLiteral("displayName")).toString());
            QCOMPARE(group->bundleIdentifier, std::optional(group->id));
        }
    }

    void nothingThatMustStay()
    {
        for (const QJsonValue id : m_expectations.value(QStringLiteral("never")).toArray()) {
            for (const OrphanedAppGroup &group : std::as_const(m_groups))
                QVERIFY2(group.id.compare(id.toString(), Qt::CaseInsensitive) != 0, qPrintable(group.id));
        }
        const QList<InstalledApp> apps = AppDiscoveryService::discoverInstalledApps();
        QVERIFY(apps.size() > 5);
        QSet<QString> paths; // no item is offered twice
        for (const OrphanedAppGroup &group : std::as_const(m_groups)) {
            const QString id = group.id.toLower();
            for (const InstalledApp &app : apps) {
                QVERIFY2(group.displayName.compare(app.name, Qt::CaseInsensitive) != 0, qPrintable(group.id));
                if (!app.bundleIdentifier)
                    continue;
                const QString installed = app.bundleIdentifier->toLower();
                QVERIFY2(id != installed && !id.startsWith(installed + QLatin1Char('.')), qPrintable(group.id));
            }
            for (const LeftoverItem &item : group.items) {
                QVERIFY2(!item.name().startsWith(QLatin1String("com.apple")), qPrintable(item.path()));
                QVERIFY2(FileSystem::exists(item.path()), qPrintable(item.path()));
                QVERIFY2(!paths.contains(item.path()), qPrintable(item.path()));
                paths.insert(item.path());
            }
        }
    }

    void cliJson()
    {
        // --all lists the scan's groups in its order; without it the uncertain ones are left out.
        const Run all = cli({QStringLiteral("orphans"), QStringLiteral("--all"), QStringLiteral("--json")});
        QCOMPARE(all.exitCode, 0);
        const QJsonArray groups = QJsonDocument::fromJson(all.out).object().value(QStringLiteral("groups")).toArray();
        QCOMPARE(groups.size(), m_groups.size());
        for (qsizetype i = 0; i < groups.size(); ++i) {
            const QJsonObject group = groups.at(i).toObject();
            QCOMPARE(group.value(QStringLiteral("id")).toString(), m_groups.at(i).id);
            QCOMPARE(group.value(QStringLiteral("confidence")).toString(), OrphanConfidences::rawValue(m_groups.at(i).confidence));
            for (const char *key : {"id", "displayName", "bundleIdentifier", "evidenceSummary", "formattedTotalSize"})
                QVERIFY2(group.value(QLatin1String(key)).isString(), key);
            const QJsonArray items = group.value(QStringLiteral("items")).toArray();
            QVERIFY(!items.isEmpty());
            qint64 sum = 0;
            for (const QJsonValue item : items) {
                QVERIFY(item.toObject().value(QStringLiteral("requiresAdmin")).isBool());
                QVERIFY(item.toObject().value(QStringLiteral("category")).isString());
                sum += item.toObject().value(QStringLiteral("size")).toInteger();
            }
            QVERIFY(group.value(QStringLiteral("totalSize")).isDouble());
            QCOMPARE(group.value(QStringLiteral("totalSize")).toInteger(), sum);
        }

        const Run shown = cli({QStringLiteral("orphans"), QStringLiteral("--json")});
        QCOMPARE(shown.exitCode, 0);
        const qsizetype uncertain = std::count_if(m_groups.cbegin(), m_groups.cend(), [](const OrphanedAppGroup &g) {
            return g.confidence == OrphanConfidence::uncertain;
        });
        QVERIFY(uncertain > 0);
        const QJsonArray confident = QJsonDocument::fromJson(shown.out).object().value(QStringLiteral("groups")).toArray();
        QCOMPARE(confident.size(), m_groups.size() - uncertain);
        for (const QJsonValue group : confident)
            QVERIFY(group.toObject().value(QStringLiteral("confidence")).toString() != QLatin1String("Uncertain match"));
    }

    void cliHumanOutput()
    {
        const Run run = cli({QStringLiteral("orphans")});
        QCOMPARE(run.exitCode, 0);
        const QString text = QString::fromUtf8(run.out);
        QVERIFY(text.contains(QStringLiteral("[Likely removed app] Writer Pro")));
        QVERIFY(text.contains(QStringLiteral("Strong match across 2 locations: Containers, Preferences.")));
        QVERIFY(!text.contains(QStringLiteral("[Uncertain match]")));
        QVERIFY(text.contains(QStringLiteral("--all shows them")));
    }
};

QTEST_GUILESS_MAIN(TestOrphanSample)
#include "tst_orphansample.moc"
