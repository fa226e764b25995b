// SPDX-License-Identifier: MIT
// Who owns what: the identity index, the ownership rule, the pass over every identifier of an app, and
// the command line's claimed items, over a generated sample Mac whose generator records whose each file is.
#include "TestSupport.h"
#include "services/AppDiscoveryService.h"
#include "services/AppIdentityIndex.h"
#include "services/LeftoverScannerService.h"
#include "services/OrphanedLeftoverScannerService.h"

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

    InstalledApp installed(const QString &name) const
    {
        for (const InstalledApp &app : AppDiscoveryService::discoverInstalledApps()) {
            if (app.name == name)
                return app;
        }
        qFatal("no installed app %s in the sample", qPrintable(name));
    }

    const LeftoverItem *itemAt(const QString &appName, const QString &relativePath) const
    {
        const ScanResult &result = m_scans[appName];
        for (const LeftoverItem &item : result.items) {
            if (relative(item.path()) == relativePath)
                return &item;
        }
        return nullptr;
    }

    Run cli(const QStringList &arguments) const
    {
        return runCli(QStringList{QStringLiteral("--root"), m_root, QStringLiteral("--home"), m_home} + arguments);
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

    // Which claims the neighbours and the generic words lead to, and why.
    void claims_data()
    {
        QTest::addColumn<QString>("scanned");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("reason");
        const QString lib = QStringLiteral("Users/ann/Library/");
        QTest::newRow("name inside a name") << "Fork" << lib + "Application Support/ForkLift" << "Belongs to ForkLift" << "named as the app";
        QTest::newRow("identifier of a neighbour") << "Fork" << lib + "Caches/com.liftco.ForkLift" << "Belongs to ForkLift"
                                                   << "named by its identifier com.liftco.ForkLift";
        QTest::newRow("three letters") << "OBS" << lib + "Application Support/Obsidian" << "Belongs to Obsidian" << "named as the app";
        QTest::newRow("a word of a longer name") << "Studio" << lib + "Application Support/LM Studio" << "Belongs to LM Studio" << "named as the app";
        QTest::newRow("launch item by its file name") << "Studio" << lib + "LaunchAgents/com.obsproject.obs-studio.virtualcam.plist"
                                                      << "Belongs to OBS" << "its program /Applications/OBS.app/Contents/MacOS/obs is inside OBS.app";
        QTest::newRow("daemon running another app's program") << "Home Tool" << "Library/LaunchDaemons/io.harbor.backupd.plist"
                                                               << "Belongs to Harbor Desktop"
                                                               << "its program /Applications/Harbor Desktop.app/Contents/Library/"
                                                                  "LaunchServices/io.harbor.vmnetd is inside Harbor Desktop.app";
        QTest::newRow("associated bundle") << "Beacon Desktop" << "Library/LaunchAgents/io.harbor.tray.plist" << "Belongs to Harbor Desktop"
                                           << "it names io.harbor.desktop as its app";
        QTest::newRow("bundle by the identifier it carries") << "Beacon Desktop" << lib + "Input Methods/Harbor Desktop Keys.app"
                                                             << "Belongs to Harbor Desktop"
                                                             << "its bundle identifier io.harbor.desktop.keys extends io.harbor.desktop";
        QTest::newRow("own bundle by the identifier it carries") << "Harbor Desktop" << lib + "Input Methods/Harbor Desktop Keys.app" << "" << "";
        QTest::newRow("program in a folder named by an identifier") << "Beacon Desktop" << "Library/LaunchAgents/io.harbor.updater.plist"
                                                                    << "Belongs to Harbor Desktop"
                                                                    << "its program /Library/Application Support/io.harbor.desktop/updater "
                                                                       "is named by io.harbor.desktop";
        QTest::newRow("own program in a folder named by its identifier") << "Harbor Desktop" << "Library/LaunchAgents/io.harbor.updater.plist"
                                                                         << "" << "";
        QTest::newRow("generic word, other app's name") << "Harbor Desktop" << lib + "Application Support/Beacon Desktop"
                                                        << "Belongs to Beacon Desktop" << "named as the app";
        QTest::newRow("recent documents of every app") << "Home Tool" << lib + "Application Support/com.apple.sharedfilelist"
                                                       << "Part of macOS" << "in Apple's com.apple. namespace";
        QTest::newRow("Apple's folder") << "Home Tool" << lib + "Application Support/Apple" << "Part of macOS" << "Apple's own folder";
        QTest::newRow("Apple's bare namespace folder") << "Home Tool" << lib + "Application Support/com.apple" << "Part of macOS"
                                                       << "Apple's own folder";
        QTest::newRow("system cache") << "Home Tool" << lib + "Caches/com.apple.helpd" << "Part of macOS" << "in Apple's com.apple. namespace";
        QTest::newRow("Apple's group container") << "Beacon Desktop" << lib + "Group Containers/group.com.apple.desktop" << "Part of macOS"
                                                 << "in Apple's com.apple. namespace";
        QTest::newRow("look-alike in another case") << "Fork" << lib + "Application Support/fORKlIFT" << "Belongs to ForkLift" << "named as the app";
        QTest::newRow("own name in another case stays own") << "Fork" << lib + "Application Support/fORK" << "" << "";
        QTest::newRow("own generic-word folder stays own") << "Harbor Desktop" << lib + "Application Support/Harbor Desktop" << "" << "";
        QTest::newRow("own team-prefixed group") << "Harbor Desktop" << lib + "Group Containers/HB7K2L9QX4.io.harbor.desktop" << "" << "";
        QTest::newRow("another vendor, no evidence") << "Acme Notes" << lib + "Application Support/com.other.stickynotes" << "" << "";
    }
    void claims()
    {
        QFETCH(QString, scanned);
        QFETCH(QString, path);
        QFETCH(QString, label);
        QFETCH(QString, reason);
        const LeftoverItem *item = itemAt(scanned, path);
        QVERIFY2(item, qPrintable(path + QStringLiteral(" not found")));
        QCOMPARE(item->claimedBy ? item->claimedBy->label() : QString(), label);
        QCOMPARE(item->claimedBy ? item->claimedBy->reason : QString(), reason);
    }

    // The pass over every identifier: what the embedded identifiers and the extra places find, where
    // it is filed and how it was found; the earlier passes keep what they reached first.
    void everyIdentifier_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("category");
        QTest::addColumn<QString>("foundBy");
        QTest::addColumn<QString>("matched");
        const QString lib = QStringLiteral("Users/ann/Library/");
        QTest::newRow("extension container") << lib + "Containers/io.harbor.desktop.share-extension" << "Containers"
                                             << "embedded identifier" << "io.harbor.desktop.share-extension";
        QTest::newRow("XPC service preferences") << lib + "Preferences/io.harbor.fetch.plist" << "Preferences" << "embedded identifier"
                                                 << "io.harbor.fetch";
        QTest::newRow("privileged helper") << "Library/PrivilegedHelperTools/io.harbor.vmnetd" << "Privileged Helper Tools"
                                           << "embedded identifier" << "io.harbor.vmnetd";
        QTest::newRow("helper's daemon, arguments only") << "Library/LaunchDaemons/io.harbor.vmnetd.plist" << "Launch Daemons"
                                                         << "embedded identifier" << "io.harbor.vmnetd";
        QTest::newRow("login item's scripts") << lib + "Application Scripts/io.harbor.loginhelper" << "Containers" << "extra location"
                                              << "io.harbor.loginhelper";
        QTest::newRow("own scripts") << lib + "Application Scripts/io.harbor.desktop" << "Containers" << "extra location" << "io.harbor.desktop";
        QTest::newRow("cookies") << lib + "Cookies/io.harbor.desktop.binarycookies" << "HTTP Storages" << "extra location" << "io.harbor.desktop";
        QTest::newRow("HTTP storage cookies") << lib + "HTTPStorages/io.harbor.desktop.binarycookies" << "HTTP Storages" << "extra location"
                                              << "io.harbor.desktop";
        QTest::newRow("recent documents") << lib + "Application Support/com.apple.sharedfilelist/com.apple.LSSharedFileList."
                                                   "ApplicationRecentDocuments/io.harbor.desktop.sfl2"
                                          << "Other Related Files" << "extra location" << "io.harbor.desktop";
        QTest::newRow("crash report") << lib + "Logs/DiagnosticReports/Harbor Desktop-2026-01-02-101010.ips" << "Other Related Files"
                                      << "extra location" << "Harbor Desktop";
        QTest::newRow("system crash report") << "Library/Logs/DiagnosticReports/Harbor Desktop_2026-01-03-111111_host.crash"
                                             << "Other Related Files" << "extra location" << "Harbor Desktop";
        QTest::newRow("agent running the app, arguments only") << lib + "LaunchAgents/io.harbor.autostart.plist" << "Launch Agents"
                                                               << "extra location" << "/Applications/Harbor Desktop.app/Contents/MacOS/Harbor Desktop";
        QTest::newRow("earlier pass keeps its find") << lib + "Group Containers/group.io.harbor.desktop" << "Group Containers" << "folder listing"
                                                     << "io.harbor.desktop";
        QTest::newRow("bundle") << "Applications/Harbor Desktop.app" << "Application" << "bundle" << "";
        QTest::newRow("another program's crash report") << lib + "Logs/DiagnosticReports/Harbor DesktopHelper-2026-01-02-101010.ips" << ""
                                                        << "" << "";
    }
    void everyIdentifier()
    {
        QFETCH(QString, path);
        QFETCH(QString, category);
        QFETCH(QString, foundBy);
        QFETCH(QString, matched);
        const LeftoverItem *item = itemAt(QStringLiteral("Harbor Desktop"), path);
        if (category.isEmpty()) {
            QVERIFY2(!item, qPrintable(path));
            return;
        }
        QVERIFY2(item, qPrintable(path + QStringLiteral(" not found")));
        QCOMPARE(LeftoverCategories::rawValue(item->category), category);
        QCOMPARE(FoundByValues::rawValue(item->foundBy), foundBy);
        QCOMPARE(item->matched.value_or(QString()), matched);
        QVERIFY(!item->claimedBy);
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

    // The removed-app scan knows installed apps by every identifier and finds what launch items,
    // scripts and cookies leave.
    void removedApps_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("confidence"); // empty: no such group
        QTest::addColumn<QStringList>("items");
        QTest::newRow("launch items of a vanished bundle") << "name:vanished backup" << "Likely removed app"
                                                           << QStringList{"Library/LaunchDaemons/com.vanishedbackup.daemon.plist",
                                                                          "Users/ann/Library/LaunchAgents/com.vanishedbackup.menu.plist"};
        QTest::newRow("scripts and cookies join") << "com.vanished.scripted" << "Likely removed app"
                                                  << QStringList{"Users/ann/Library/Application Scripts/com.vanished.scripted",
                                                                 "Users/ann/Library/Containers/com.vanished.scripted",
                                                                 "Users/ann/Library/Cookies/com.vanished.scripted.binarycookies",
                                                                 "Users/ann/Library/Preferences/com.vanished.scripted.plist"};
        QTest::newRow("scripts alone") << "com.vanished.scriptsonly" << "" << QStringList();
        QTest::newRow("extension of an installed app") << "io.harbor.desktop.share-extension" << "" << QStringList();
        QTest::newRow("XPC service of an installed app") << "io.harbor.fetch" << "" << QStringList();
        QTest::newRow("Quick Look extension of an installed app") << "io.harbor.quicklook" << "" << QStringList();
        QTest::newRow("launch items of an installed bundle") << "name:harbor desktop" << "" << QStringList();
    }
    void removedApps()
    {
        QFETCH(QString, id);
        QFETCH(QString, confidence);
        QFETCH(QStringList, items);
        const QList<OrphanedAppGroup> groups = OrphanedLeftoverScannerService::scan().result();
        const auto group = std::find_if(groups.cbegin(), groups.cend(), [&](const OrphanedAppGroup &g) { return g.id == id; });
        if (confidence.isEmpty()) {
            QVERIFY2(group == groups.cend(), qPrintable(id));
            return;
        }
        QVERIFY2(group != groups.cend(), qPrintable(id));
        QCOMPARE(OrphanConfidences::rawValue(group->confidence), confidence);
        QStringList found;
        for (const LeftoverItem &item : group->items)
            found.append(relative(item.path()));
        QCOMPARE(found, items);
        for (const LeftoverItem &item : group->items) {
            const bool launched = item.category == LeftoverCategory::launchAgents || item.category == LeftoverCategory::launchDaemons;
            QCOMPARE(FoundByValues::rawValue(item.foundBy), launched ? QStringLiteral("launch item") : QStringLiteral("folder listing"));
            QVERIFY(item.matched && (!launched || item.matched->startsWith(QLatin1String("/Applications/Vanished Backup.app/"))));
        }
        // Every item of every group nobody else owns.
        const AppIdentityIndex::Index index = AppIdentityIndex::build();
        for (const OrphanedAppGroup &g : groups) {
            for (const LeftoverItem &item : g.items)
                QVERIFY2(!AppIdentityIndex::claimant(index, item.path(), nullptr), qPrintable(item.path()));
        }
    }

    // The command line: every item says how it was found and whose it is; remove leaves claimed items
    // unless told otherwise, and lists them as kept.
    void cliScanAndRemove()
    {
        const Run scan = cli({QStringLiteral("scan"), QStringLiteral("Fork"), QStringLiteral("--json")});
        QCOMPARE(scan.exitCode, 0);
        int claimed = 0;
        for (const QJsonValue item : QJsonDocument::fromJson(scan.out)[u"items"].toArray()) {
            QVERIFY(item[u"foundBy"].isString() && (item[u"matched"].isString() || item[u"matched"].isNull()));
            const QJsonValue owner = item[u"claimedBy"];
            QCOMPARE(item[u"selected"].toBool(), owner.isNull());
            if (!owner.isNull()) {
                QVERIFY(owner[u"name"].isString() && owner[u"reason"].isString() && owner.toObject().contains(u"bundleIdentifier"));
                ++claimed;
            }
        }
        QVERIFY(claimed > 0);

        const Run why = cli({QStringLiteral("scan"), QStringLiteral("Fork"), QStringLiteral("--why")});
        QCOMPARE(why.exitCode, 0);
        QVERIFY2(why.out.contains("found by known location (matched io.forkworks.mac)")
                     && why.out.contains("[Belongs to ForkLift, kept]") && why.out.contains("; Belongs to ForkLift: named as the app"),
                 why.out.constData());

        for (const bool include : {false, true}) {
            QStringList arguments{QStringLiteral("remove"), QStringLiteral("Fork"), QStringLiteral("--dry-run"), QStringLiteral("--json")};
            const Run remove = cli(include ? arguments << QStringLiteral("--include-claimed") : arguments);
            QCOMPARE(remove.exitCode, 0);
            const QJsonObject report = QJsonDocument::fromJson(remove.out).object();
            const QJsonArray kept = report[u"kept"].toArray();
            QCOMPARE(kept.size(), include ? 0 : claimed);
            QCOMPARE(report[u"deleted"].toArray().size() + kept.size(), QJsonDocument::fromJson(scan.out)[u"items"].toArray().size());
            for (const QJsonValue entry : kept)
                QVERIFY(entry[u"reason"].toString().startsWith(QLatin1String("Belongs to ")) && !entry[u"item"][u"selected"].toBool());
        }
    }
};

QTEST_GUILESS_MAIN(OwnershipTest)
#include "tst_ownership.moc"
