// SPDX-License-Identifier: MIT
// Who owns what: the identity index, the ownership rule and the pass over every identifier of an app, over
// a generated sample Mac whose generator records whose each file is. Each claim's owner and reason, and
// how each item was found, are in tst_cli_reference's scans of the sample.
#include "TestSupport.h"
#include "services/AppDiscoveryService.h"
#include "services/AppIdentityIndex.h"
#include "services/LeftoverScannerService.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopeGuard>
#include <QTest>

using namespace TestSupport;

class OwnershipTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;
    QString m_home;
    QJsonObject m_expected;
    QHash<QString, ScanResult> m_scans; // by app name

    QString relative(const QString &path) const { return path.mid(m_root.size() + 1); }

    const LeftoverItem *itemAt(const QString &appName, const QString &relativePath) const
    {
        const ScanResult &result = m_scans[appName];
        for (const LeftoverItem &item : result.items) {
            if (relative(item.path()) == relativePath)
                return &item;
        }
        return nullptr;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_root = m_dir.path() + QStringLiteral("/mac");
        m_home = sampleHome(m_root);
        QString log;
        QVERIFY2(generateSampleMac(m_root, 3, QStringLiteral("small"), &log), qPrintable(log));
        useLayout(m_root, m_home);
        m_expected = QJsonDocument::fromJson(readBytes(m_root + QStringLiteral("/.kestrune-expected-owners.json"))).object();
        QVERIFY(!m_expected.isEmpty());
        for (const InstalledApp &app : AppDiscoveryService::discoverInstalledApps())
            m_scans.insert(app.name, LeftoverScannerService::scan(app).result());
    }

    void identifierStem_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("stem");
        QTest::newRow("preferences") << "com.acme.notes.plist" << "com.acme.notes";
        QTest::newRow("lock file") << "com.acme.notes.plist.lockfile" << "com.acme.notes";
        QTest::newRow("recent documents") << "com.acme.notes.sfl3" << "com.acme.notes";
        QTest::newRow("sfl with letters stays") << "com.acme.notes.sflx" << "com.acme.notes.sflx";
        QTest::newRow("team prefix") << "HB7K2L9QX4.com.acme.notes" << "com.acme.notes";
        QTest::newRow("short team-like prefix stays") << "XYZ123.com.acme.notes" << "XYZ123.com.acme.notes";
        QTest::newRow("lower-case prefix stays") << "hb7k2l9qx4.com.acme.notes" << "hb7k2l9qx4.com.acme.notes";
        QTest::newRow("group") << "group.com.acme.notes" << "com.acme.notes";
        QTest::newRow("team and group") << "HB7K2L9QX4.group.com.acme.notes" << "com.acme.notes";
        QTest::newRow("a plain name") << "Acme Notes" << "Acme Notes";
    }
    void identifierStem()
    {
        QFETCH(QString, name);
        QFETCH(QString, stem);
        QCOMPARE(AppIdentityIndex::identifierStem(name), stem);
    }

    // The rule itself on a small Mac of its own: the longest identifier decides, a tie and the app's own
    // embedded identifiers are the scanned app's, Apple's namespace is macOS's except for Apple's apps.
    void exactEvidence_data()
    {
        QTest::addColumn<QString>("scanned"); // a bundle under /Applications or /System/Applications
        QTest::addColumn<QString>("item");    // a name under ~/Library/Preferences
        QTest::addColumn<QString>("owner");   // empty: the scanned app's, or nobody's
        QTest::newRow("longer identifier of another app") << "Example.app" << "com.example.app.pro.plist" << "Example Pro";
        QTest::newRow("shorter identifier of another app") << "Example Pro.app" << "com.example.app.plist" << "Example";
        QTest::newRow("extension of another app") << "Example Pro.app" << "com.example.app.share.plist" << "Example";
        QTest::newRow("own embedded identifier") << "Example.app" << "com.example.app.share.plist" << "";
        QTest::newRow("a second copy of the same app") << "Copy/Example.app" << "com.example.app.plist" << "";
        QTest::newRow("no dot, no extension") << "Example Pro.app" << "com.example.application.plist" << "";
        QTest::newRow("team prefix of another app") << "Example.app" << "ABCDE12345.com.example.app.pro" << "Example Pro";
        QTest::newRow("another app's name") << "Example.app" << "EXAMPLE PRO" << "Example Pro";
        QTest::newRow("a name that only begins like one") << "Example.app" << "Example Pro Backups" << "";
        QTest::newRow("Apple's namespace") << "Example.app" << "com.apple.dock.plist" << "macOS";
        QTest::newRow("Apple's app") << "Example.app" << "com.apple.Notes.plist" << "macOS";
        QTest::newRow("Apple's app scanning its own namespace") << "/System/Applications/Notes.app" << "com.apple.dock.plist" << "";
    }
    void exactEvidence()
    {
        QFETCH(QString, scanned);
        QFETCH(QString, item);
        QFETCH(QString, owner);
        QTemporaryDir dir;
        const QString root = dir.path();
        writeApp(root + QStringLiteral("/Applications/Example.app"), QStringLiteral("Example"), QStringLiteral("com.example.app"));
        writeFile(root + QStringLiteral("/Applications/Example.app/Contents/PlugIns/Share.appex/Contents/Info.plist"),
                  infoPlist({{QStringLiteral("CFBundleIdentifier"), QStringLiteral("com.example.app.share")}}));
        writeApp(root + QStringLiteral("/Applications/Example Pro.app"), QStringLiteral("Example Pro"), QStringLiteral("com.example.app.pro"));
        writeApp(root + QStringLiteral("/Applications/Copy/Example.app"), QStringLiteral("Example"), QStringLiteral("com.example.app"));
        writeApp(root + QStringLiteral("/System/Applications/Notes.app"), QStringLiteral("Notes"), QStringLiteral("com.apple.Notes"));
        useLayout(root, root + QStringLiteral("/Users/ann"));
        const auto restore = qScopeGuard([this] { useLayout(m_root, m_home); });
        const AppIdentityIndex::Index index = AppIdentityIndex::build();
        const auto self = AppIdentityIndex::identify(scanned.startsWith(QLatin1Char('/')) ? root + scanned
                                                                                          : root + QStringLiteral("/Applications/") + scanned);
        QVERIFY(self);
        const auto claim = AppIdentityIndex::claimant(index, root + QStringLiteral("/Users/ann/Library/Preferences/") + item, &*self);
        QCOMPARE(claim ? claim->name : QString(), owner);
    }

    // Every embedded bundle the sample's bundles hold, read from its own information list; Apple's
    // apps under /System are macOS's.
    void index()
    {
        const AppIdentityIndex::Index index = AppIdentityIndex::build();
        const auto find = [&](const QString &name) -> const AppIdentityIndex::AppIdentity * {
            for (const AppIdentityIndex::AppIdentity &app : index.apps) {
                if (app.name == name)
                    return &app;
            }
            return nullptr;
        };
        const auto *harbor = find(QStringLiteral("Harbor Desktop"));
        QVERIFY(harbor);
        QCOMPARE(harbor->executable, QStringLiteral("Harbor Desktop"));
        QStringList embedded = harbor->embeddedIdentifiers;
        embedded.sort();
        QCOMPARE(embedded, (QStringList{"io.harbor.desktop.helper.gpu", "io.harbor.desktop.share-extension", "io.harbor.fetch",
                                        "io.harbor.loginhelper", "io.harbor.quicklook", "io.harbor.vmnetd"}));
        QCOMPARE(find(QStringLiteral("Zeta Tools"))->embeddedIdentifiers, QStringList{"com.zeta.tools.helper"});
        for (const char *apple : {"Safari", "Terminal", "Finder", "Music"})
            QVERIFY2(find(QLatin1String(apple)) && find(QLatin1String(apple))->isApple, apple);
        QVERIFY(!harbor->isApple);
        QVERIFY(find(QStringLiteral("Safari"))->embeddedIdentifiers.contains(QStringLiteral("com.apple.Safari.SharingExtension")));
        // Discovery's bundles, and only they, besides Apple's (X.app is a file, no bundle).
        qsizetype bundles = 0;
        for (const InstalledApp &app : AppDiscoveryService::discoverInstalledApps()) {
            const bool isBundle = QFileInfo(app.bundlePath()).isDir();
            QCOMPARE(index.byBundlePath.contains(app.bundlePath()), isBundle);
            bundles += isBundle ? 1 : 0;
        }
        QCOMPARE(index.apps.size(), bundles + 4);
    }

    // A path the generator wrote for one app is listed in another app's scan only as the first app's,
    // and unticked; the scanned app's own files are never claimed.
    void noScanTicksAnotherAppsFile()
    {
        const QJsonObject owners = m_expected[u"owners"].toObject();
        int claimedSeen = 0;
        for (auto scan = m_scans.cbegin(); scan != m_scans.cend(); ++scan) {
            for (const LeftoverItem &item : scan->items) {
                const QString owner = owners.value(relative(item.path())).toString();
                const QString where = scan.key() + QStringLiteral(": ") + item.path();
                QCOMPARE(item.isSelectedByDefault(), !item.claimedBy.has_value());
                if (owner.isEmpty())
                    continue;
                if (owner == scan.key()) {
                    QVERIFY2(!item.claimedBy, qPrintable(where + QStringLiteral(" claimed by ") + item.claimedBy.value_or(ItemOwner()).name));
                } else {
                    QVERIFY2(item.claimedBy, qPrintable(where + QStringLiteral(" is ") + owner + QStringLiteral("'s")));
                    QCOMPARE(item.claimedBy->name, owner);
                    ++claimedSeen;
                }
            }
        }
        QVERIFY2(claimedSeen >= 10, qPrintable(QString::number(claimedSeen)));
    }

    // Every container, preference file, script folder and helper named by an embedded identifier.
    void embeddedLeftoversFound()
    {
        const QJsonObject embedded = m_expected[u"embedded"].toObject();
        QVERIFY(!embedded.isEmpty());
        for (auto app = embedded.constBegin(); app != embedded.constEnd(); ++app) {
            for (const QJsonValue path : app.value().toArray()) {
                const LeftoverItem *item = itemAt(app.key(), path.toString());
                QVERIFY2(item && !item->claimedBy, qPrintable(app.key() + QStringLiteral(": ") + path.toString()));
            }
        }
    }
};

QTEST_GUILESS_MAIN(OwnershipTest)
#include "tst_ownership.moc"
