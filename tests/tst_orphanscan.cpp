// SPDX-License-Identifier: MIT
// The removed-app scan over small Library trees: each location pass, preference names, consolidation,
// the installed-app tests and the component filter, as seen through the scan's result.
#include "TestSupport.h"
#include "services/OrphanRules.h"
#include "services/OrphanedLeftoverScannerService.h"

#include <QTest>

using namespace TestSupport;
using C = LeftoverCategory;

class TestOrphanScan : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;
    QString m_home;

    QString lib(const QString &relative) const { return m_home + QStringLiteral("/Library/") + relative; }
    void folder(const QString &relative, qint64 bytes = 10) { writeFile(lib(relative) + QStringLiteral("/data"), QByteArray(bytes, 'x')); }
    void prefs(const QString &bundleID, const QList<std::pair<QString, QString>> &strings = {})
    {
        writeFile(lib(QStringLiteral("Preferences/%1.plist").arg(bundleID)), infoPlist(strings));
    }
    void install(const QString &file, const QString &name, const QString &id) { writeApp(m_root + QStringLiteral("/Applications/") + file, name, id); }
    static QList<OrphanedAppGroup> scan() { return OrphanedLeftoverScannerService::scan().result(); }
    static const OrphanedAppGroup *find(const QList<OrphanedAppGroup> &groups, const QString &id)
    {
        for (const OrphanedAppGroup &group : groups) {
            if (group.id == id)
                return &group;
        }
        return nullptr;
    }
    static QStringList ids(const QList<OrphanedAppGroup> &groups)
    {
        QStringList result;
        for (const OrphanedAppGroup &group : groups)
            result.append(group.id);
        return result;
    }

private Q_SLOTS:
    void init()
    {
        QVERIFY(m_dir.isValid());
        m_root = caseFolder(m_dir);
        m_home = useSampleLayout(m_root);
        makeFolder(m_root + QStringLiteral("/Applications"));
    }

    void containerAndPreference()
    {
        folder(QStringLiteral("Containers/com.example.app"), 100);
        prefs(QStringLiteral("com.example.app"), {{QStringLiteral("CFBundleName"), QStringLiteral("Example")}});
        folder(QStringLiteral("Containers/Data"));
        const QList<OrphanedAppGroup> groups = scan();
        QCOMPARE(ids(groups), QStringList{QStringLiteral("com.example.app")});
        const OrphanedAppGroup &group = groups.constFirst();
        QCOMPARE(group.bundleIdentifier, std::optional(QStringLiteral("com.example.app")));
        QCOMPARE(group.displayName, QStringLiteral("Example"));
        QCOMPARE(group.confidence, OrphanConfidence::high);
        QCOMPARE(group.evidenceSummary, QStringLiteral("Strong match across 2 locations: Containers, Preferences."));
        QCOMPARE(group.items.size(), 2);
        QCOMPARE(group.items.at(0).path(), lib(QStringLiteral("Containers/com.example.app")));
        QCOMPARE(group.items.at(0).size, 100);
        QCOMPARE(group.items.at(1).category, C::preferences);
    }

    // The same leftovers are never reported while an app claims them.
    void installedAppsClaimLeftovers_data()
    {
        QTest::addColumn<QString>("appFile");
        QTest::addColumn<QString>("appName");
        QTest::addColumn<QString>("appID");
        QTest::newRow("same identifier") << "Example.app" << "Example" << "com.Example.app";
        QTest::newRow("identifier in other case") << "Example.app" << "Example" << "COM.Example.APP";
        QTest::newRow("identifier prefix") << "Example.app" << "Example" << "com.example";
        QTest::newRow("display name, other case") << "Other.app" << "EXAMPLE PRO" << "org.other";
        QTest::newRow("bundle file name of an item") << "com.example.app.app" << "Unrelated" << "";
    }
    void installedAppsClaimLeftovers()
    {
        QFETCH(QString, appFile);
        QFETCH(QString, appName);
        QFETCH(QString, appID);
        install(appFile, appName, appID);
        folder(QStringLiteral("Containers/com.Example.app"));
        folder(QStringLiteral("Saved Application State/com.Example.app.savedState"));
        prefs(QStringLiteral("com.Example.app"), {{QStringLiteral("CFBundleName"), QStringLiteral("Example Pro")}});
        const QList<OrphanedAppGroup> groups = scan();
        QVERIFY2(groups.isEmpty(), qPrintable(ids(groups).join(u' ')));
    }

    void prefixOfInstalledIdentifierIsNotEnough()
    {
        install(QStringLiteral("Example.app"), QStringLiteral("Example"), QStringLiteral("com.example.app"));
        folder(QStringLiteral("Containers/com.example.application")); // no dot after the installed identifier
        writeFile(lib(QStringLiteral("HTTPStorages/com.example.app.binarycookies")), "c");
        QCOMPARE(ids(scan()), QStringList{QStringLiteral("com.example.application")});
    }

    void preferenceDisplayNames_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<QString>("expected");
        QTest::newRow("display name first") << infoPlist({{"CFBundleName", "Short"}, {"CFBundleDisplayName", "Long Name"}}) << "Long Name";
        QTest::newRow("empty display name") << infoPlist({{"CFBundleDisplayName", ""}, {"CFBundleName", "Short"}}) << "Short";
        QTest::newRow("kept untrimmed") << infoPlist({{"CFBundleName", " Spaced "}}) << " Spaced ";
        QTest::newRow("not a string") << QByteArray("<plist><dict><key>CFBundleName</key><integer>4</integer></dict></plist>") << "Tool";
        QTest::newRow("truncated") << infoPlist({{"CFBundleName", "Never"}}).left(60) << "Tool";
    }
    void preferenceDisplayNames()
    {
        QFETCH(QByteArray, contents);
        QFETCH(QString, expected);
        folder(QStringLiteral("Containers/com.example.tool"));
        writeFile(lib(QStringLiteral("Preferences/com.example.tool.plist")), contents);
        const QList<OrphanedAppGroup> groups = scan();
        QCOMPARE(groups.size(), 1);
        QCOMPARE(groups.constFirst().displayName, expected);
        QCOMPARE(groups.constFirst().items.size(), 2); // the unreadable file is still a leftover
    }

    // Both readings, cached and literal, must find the same.
    void cacheMatching()
    {
        prefs(QStringLiteral("com.example.app"), {{QStringLiteral("CFBundleName"), QStringLiteral("Example App")}});
        // An equal-length identifier with the same name: the tie goes the same way every time.
        prefs(QStringLiteral("com.example.apq"), {{QStringLiteral("CFBundleName"), QStringLiteral("Example App")}});
        prefs(QStringLiteral("com.example.app.pro"));
        prefs(QStringLiteral("org.tiny.xy"), {{QStringLiteral("CFBundleName"), QStringLiteral("X-Y!")}});
        folder(QStringLiteral("Caches/com.example.app.ShipIt"));
        folder(QStringLiteral("Caches/com.example.app.pro.cache"));
        folder(QStringLiteral("Caches/Example App Cache"));
        folder(QStringLiteral("Caches/net.nobody.cache"));
        folder(QStringLiteral("Caches/xy-data"));
        folder(QStringLiteral("Caches/org.tiny.xy"));
        const QList<OrphanedAppGroup> groups = OrphanedLeftoverScannerService::performScan(false);
        const OrphanedAppGroup *app = find(groups, QStringLiteral("com.example.app"));
        QVERIFY(app);
        QCOMPARE(app->items.size(), 3);
        QCOMPARE(app->items.at(0).path(), lib(QStringLiteral("Caches/com.example.app.ShipIt")));
        QCOMPARE(app->items.at(1).path(), lib(QStringLiteral("Caches/Example App Cache")));
        const OrphanedAppGroup *pro = find(groups, QStringLiteral("com.example.app.pro"));
        QVERIFY(pro);
        QCOMPARE(pro->items.size(), 2);
        QCOMPARE(pro->displayName, QStringLiteral("Pro"));
        // "xy-data" does not reach the two-letter name; the exact folder alone is too little evidence.
        const OrphanedAppGroup *tiny = find(groups, QStringLiteral("org.tiny.xy"));
        QVERIFY(tiny);
        QCOMPARE(tiny->items.size(), 2);
        QCOMPARE(groups.size(), 3);
        QCOMPARE(OrphanedLeftoverScannerService::performScan(true), groups);
    }

    void applicationSupport()
    {
        install(QStringLiteral("Installed Thing.app"), QStringLiteral("Installed Thing"), QStringLiteral("net.installed"));
        prefs(QStringLiteral("com.vendor.foo"));
        prefs(QStringLiteral("com.vendor.installed-thing"));
        prefs(QStringLiteral("com.google.chrome"), {{QStringLiteral("CFBundleName"), QStringLiteral("Google")}});
        folder(QStringLiteral("Application Support/Foo"));
        folder(QStringLiteral("Application Support/Google"));
        folder(QStringLiteral("Application Support/INSTALLED THING"));
        folder(QStringLiteral("Application Support/Bar"));
        folder(QStringLiteral("Application Support/com.vendor.solo"));
        folder(QStringLiteral("Containers/com.vendor.installed-thing"));
        const QList<OrphanedAppGroup> groups = scan();
        const OrphanedAppGroup *foo = find(groups, QStringLiteral("com.vendor.foo"));
        QVERIFY(foo);
        QCOMPARE(foo->displayName, QStringLiteral("Foo"));
        QCOMPARE(foo->evidenceSummary, QStringLiteral("Strong match across 2 locations: Application Support, Preferences."));
        // The installed app's folder is left alone even though a preference file names it.
        const OrphanedAppGroup *thing = find(groups, QStringLiteral("com.vendor.installed-thing"));
        QVERIFY(thing);
        QCOMPARE(thing->items.size(), 2);
        QVERIFY(!find(groups, QStringLiteral("com.vendor.solo")));
        QCOMPARE(groups.size(), 2);
    }

    void savedStateSuffix()
    {
        folder(QStringLiteral("Saved Application State/com.example.app.savedState"));
        folder(QStringLiteral("Saved Application State/com.example.two.SAVEDSTATE"));
        folder(QStringLiteral("Saved Application State/com.example.two"));
        folder(QStringLiteral("Saved Application State/Writer.savedState"));
        prefs(QStringLiteral("com.example.app"));
        prefs(QStringLiteral("com.example.two"));
        prefs(QStringLiteral("org.pen.writer"));
        const QList<OrphanedAppGroup> groups = scan();
        QCOMPARE(ids(groups), (QStringList{QStringLiteral("com.example.app"), QStringLiteral("org.pen.writer")}));
        QCOMPARE(find(groups, QStringLiteral("org.pen.writer"))->displayName, QStringLiteral("Writer"));
        QCOMPARE(groups.constFirst().confidence, OrphanConfidence::medium);
    }

    void webStorage()
    {
        folder(QStringLiteral("WebKit/com.example.app"));
        folder(QStringLiteral("HTTPStorages/com.example.app"));
        writeFile(lib(QStringLiteral("HTTPStorages/com.example.app.binarycookies")), "cookie");
        writeFile(lib(QStringLiteral("HTTPStorages/com.example.app.binarycookies.more")), "cookie");
        folder(QStringLiteral("WebKit/com.example.app.binarycookies"));
        const QList<OrphanedAppGroup> groups = scan();
        QCOMPARE(ids(groups), (QStringList{QStringLiteral("com.example.app"), QStringLiteral("com.example.app.binarycookies")}));
        QCOMPARE(groups.constFirst().evidenceSummary, QStringLiteral("Weak match. Review carefully before deleting."));
    }

    void groupContainers()
    {
        folder(QStringLiteral("Group Containers/ABCDE12345.com.example.shared"));
        folder(QStringLiteral("Group Containers/shared stuff"));
        folder(QStringLiteral("Group Containers/group.com.example.app"));
        folder(QStringLiteral("Containers/ABCDE12345.com.example.shared"));
        prefs(QStringLiteral("com.example.app"));
        const QList<OrphanedAppGroup> groups = scan();
        const OrphanedAppGroup *shared = find(groups, QStringLiteral("ABCDE12345.com.example.shared"));
        QVERIFY(shared);
        QCOMPARE(shared->items.size(), 2);
        QCOMPARE(shared->bundleIdentifier, std::optional(QStringLiteral("ABCDE12345.com.example.shared")));
        QCOMPARE(groups.size(), 1); // the "group." folder keeps its prefix, so the preference file stays apart
    }

    void preferenceFileNeedsAGroup()
    {
        prefs(QStringLiteral("com.example.lonely"), {{QStringLiteral("CFBundleName"), QStringLiteral("Lonely")}});
        writeFile(lib(QStringLiteral("Preferences/com.example.text.txt")), "x");
        makeSymlink(QStringLiteral("/nowhere"), lib(QStringLiteral("Preferences/com.example.gone.plist")));
        folder(QStringLiteral("Containers/com.example.gone"));
        const QList<OrphanedAppGroup> groups = scan();
        QCOMPARE(ids(groups), QStringList{QStringLiteral("com.example.gone")});
        QCOMPARE(groups.constFirst().items.size(), 1); // the dangling link is not a leftover
    }

    void systemEntriesAreKeptOut()
    {
        // Which names count as the system's is tst_orphanrules::systemArtifact; here, that every pass asks.
        folder(QStringLiteral("Containers/com.apple.Safari"));
        folder(QStringLiteral("Group Containers/group.com.apple.notes"));
        prefs(QStringLiteral("com.apple.finder"), {{QStringLiteral("CFBundleName"), QStringLiteral("Finder")}});
        folder(QStringLiteral("Caches/Finder Cache"));
        // A display name that is an excluded folder name keeps its entries out too.
        prefs(QStringLiteral("com.vendor.mailer"), {{QStringLiteral("CFBundleName"), QStringLiteral("Mail")}});
        folder(QStringLiteral("Containers/com.vendor.mailer"));
        QVERIFY(scan().isEmpty());
    }

    void casesStayApart()
    {
        folder(QStringLiteral("Containers/com.Example.App"));
        folder(QStringLiteral("Containers/com.example.app"));
        const QList<OrphanedAppGroup> groups = scan();
        QCOMPARE(groups.size(), 2);
        QCOMPARE(groups.at(0).items.size(), 1);
    }

    void componentsAreDropped()
    {
        folder(QStringLiteral("Containers/com.example.app.loginitem"));
        folder(QStringLiteral("Containers/com.example.update"));
        folder(QStringLiteral("Containers/com.example.tool"));
        prefs(QStringLiteral("com.example.tool"), {{QStringLiteral("CFBundleName"), QStringLiteral("Tool CrashReporter")}});
        QCOMPARE(ids(scan()), QStringList{QStringLiteral("com.example.update")});
    }

    void itemsSortedAndZeroSizesListed()
    {
        prefs(QStringLiteral("com.example.big"));
        writeFile(lib(QStringLiteral("Caches/com.example.big")), QByteArray());
        folder(QStringLiteral("Caches/com.example.big.B"));
        folder(QStringLiteral("Caches/com.example.big.a"));
        makeFolder(lib(QStringLiteral("Containers/com.example.empty")));
        const QList<OrphanedAppGroup> groups = scan();
        QCOMPARE(ids(groups), (QStringList{QStringLiteral("com.example.empty"), QStringLiteral("com.example.big")}));
        QStringList paths;
        for (const LeftoverItem &item : groups.at(1).items)
            paths.append(item.path().mid(lib(QString()).size()));
        // Case-insensitive: code-unit order would put "B" before "a".
        QCOMPARE(paths, (QStringList{"Caches/com.example.big", "Caches/com.example.big.a", "Caches/com.example.big.B",
                                     "Preferences/com.example.big.plist"}));
        QCOMPARE(groups.at(0).totalSize(), 0);
    }

    void quickSizeLimit()
    {
        for (int i = 0; i < 600; ++i)
            writeFile(lib(QStringLiteral("Containers/com.example.many/f%1").arg(i)), "x");
        const QList<OrphanedAppGroup> groups = scan();
        QCOMPARE(groups.size(), 1);
        QCOMPARE(groups.constFirst().totalSize(), 500);
    }
};

QTEST_GUILESS_MAIN(TestOrphanScan)
#include "tst_orphanscan.moc"
