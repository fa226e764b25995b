// SPDX-License-Identifier: MIT
// The removed-app scan over small Library trees: each location pass, preference names, consolidation,
// the installed-app tests and the component filter, as seen through the scan's result.
#include "TestSupport.h"
#include "services/OrphanRules.h"
#include "services/OrphanedLeftoverScannerService.h"

#include <QTest>

using namespace TestSupport;

class TestOrphanScan : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;
    QString m_home;

    QString lib(const QString &relative) const { return m_home + QStringLiteral("/Library/") + relative; }

    // "App:File.app|Name|id" installs an app, "+x" is a plain file, "@x" a dangling link, "x.plist=Name"
    // a preference file naming the app ("=<..." gives its bytes), anything else a folder of ten bytes.
    void build(const QStringList &entries)
    {
        for (const QString &entry : entries) {
            const QString path = entry.section(QLatin1Char('='), 0, 0), value = entry.section(QLatin1Char('='), 1);
            if (entry.startsWith(QLatin1String("App:"))) {
                const QStringList app = entry.mid(4).split(QLatin1Char('|'));
                writeApp(m_root + QStringLiteral("/Applications/") + app.at(0), app.at(1), app.at(2));
            } else if (entry.startsWith(QLatin1Char('+'))) {
                writeFile(lib(entry.mid(1)), "file");
            } else if (entry.startsWith(QLatin1Char('@'))) {
                makeSymlink(QStringLiteral("/nowhere"), lib(entry.mid(1)));
            } else if (path.endsWith(QLatin1String(".plist"))) {
                writeFile(lib(path), value.startsWith(QLatin1Char('<')) ? value.toUtf8() : infoPlist({{QStringLiteral("CFBundleName"), value}}));
            } else {
                writeFile(lib(entry) + QStringLiteral("/data"), QByteArray(10, 'x'));
            }
        }
    }
    // "id|display name|grade letter and item count", in the scan's order.
    static QStringList summary(const QList<OrphanedAppGroup> &groups)
    {
        QStringList result;
        for (const OrphanedAppGroup &group : groups)
            result.append(group.id + u'|' + group.displayName + u'|' + "hmu"[int(group.confidence)] + QString::number(group.items.size()));
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

    void scan_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QStringList>("expected");
        const QStringList claimed = {"Containers/com.Example.app", "Saved Application State/com.Example.app.savedState",
                                     "Preferences/com.Example.app.plist=Example Pro"};
        // While an app claims them, the same leftovers are never reported; the sample Mac has identifiers
        // in other case and longer ones.
        QTest::newRow("installed: same identifier") << claimed + QStringList{"App:Example.app|Example|com.Example.app"} << QStringList();
        QTest::newRow("installed: display name, other case") << claimed + QStringList{"App:Other.app|EXAMPLE PRO|org.other"} << QStringList();
        QTest::newRow("installed: bundle file name of an item") << claimed + QStringList{"App:com.example.app.app|Unrelated|"} << QStringList();
        QTest::newRow("installed: prefix needs the dot")
            << QStringList{"App:Example.app|Example|com.example.app", "Containers/com.example.application", "+HTTPStorages/com.example.app.binarycookies"}
            << QStringList{"com.example.application|Application|h1"};
        // Which names count as the system's is tst_orphanrules' and the sample Mac's; here, that every
        // pass asks. A display name that is an excluded folder name keeps its entries out too.
        QTest::newRow("system entries") << QStringList{"Containers/com.apple.Safari", "Group Containers/group.com.apple.notes",
                                                       "Preferences/com.apple.finder.plist=Finder", "Caches/Finder Cache",
                                                       "Preferences/com.vendor.mailer.plist=Mail", "Containers/com.vendor.mailer"}
                                        << QStringList();
        QTest::newRow("components") << QStringList{"Containers/com.example.app.loginitem", "Containers/com.example.update",
                                                   "Containers/com.example.tool", "Preferences/com.example.tool.plist=Tool CrashReporter"}
                                    << QStringList{"com.example.update|Update|h1"};
        // The installed app's support folder is left alone even though a preference file names it.
        QTest::newRow("application support")
            << QStringList{"App:Installed Thing.app|Installed Thing|net.installed", "Preferences/com.vendor.foo.plist",
                           "Preferences/com.vendor.installed-thing.plist", "Preferences/com.google.chrome.plist=Google", "Application Support/Foo",
                           "Application Support/Google", "Application Support/INSTALLED THING", "Application Support/Bar",
                           "Application Support/com.vendor.solo", "Containers/com.vendor.installed-thing"}
            << QStringList{"com.vendor.foo|Foo|h2", "com.vendor.installed-thing|Installed Thing|h2"};
        QTest::newRow("saved state suffix")
            << QStringList{"Saved Application State/com.example.app.savedState", "Saved Application State/com.example.two.SAVEDSTATE",
                           "Saved Application State/com.example.two", "Saved Application State/Writer.savedState",
                           "Preferences/com.example.app.plist", "Preferences/com.example.two.plist", "Preferences/org.pen.writer.plist"}
            << QStringList{"com.example.app|App|m2", "org.pen.writer|Writer|m2"};
        QTest::newRow("web storage") << QStringList{"WebKit/com.example.app", "HTTPStorages/com.example.app", "+HTTPStorages/com.example.app.binarycookies",
                                                    "+HTTPStorages/com.example.app.binarycookies.more", "WebKit/com.example.app.binarycookies"}
                                     << QStringList{"com.example.app|App|u2", "com.example.app.binarycookies|Binarycookies|u2"};
        // The "group." folder keeps its prefix, so the preference file stays apart.
        QTest::newRow("group containers")
            << QStringList{"Group Containers/ABCDE12345.com.example.shared", "Group Containers/shared stuff", "Group Containers/group.com.example.app",
                           "Containers/ABCDE12345.com.example.shared", "Preferences/com.example.app.plist"}
            << QStringList{"ABCDE12345.com.example.shared|Shared|h2"};
        // A preference file alone is no group; a dangling link is no leftover.
        QTest::newRow("preference needs a group")
            << QStringList{"Preferences/com.example.lonely.plist=Lonely", "+Preferences/com.example.text.txt", "@Preferences/com.example.gone.plist",
                           "Containers/com.example.gone"}
            << QStringList{"com.example.gone|Gone|h1"};
        QTest::newRow("cases stay apart") << QStringList{"Containers/com.Example.App", "Containers/com.example.app"}
                                          << QStringList{"com.Example.App|App|h1", "com.example.app|App|h1"};
        // The display name comes before the bundle name; a name that is no string names nothing, but the
        // file is still a leftover.
        QTest::newRow("names in preference files")
            << QStringList{"Containers/com.example.tool", "Containers/com.example.count",
                           "Preferences/com.example.tool.plist=<plist><dict><key>CFBundleName</key><string>Short</string>"
                           "<key>CFBundleDisplayName</key><string>Long Name</string></dict></plist>",
                           "Preferences/com.example.count.plist=<plist><dict><key>CFBundleName</key><integer>4</integer></dict></plist>"}
            << QStringList{"com.example.tool|Long Name|h2", "com.example.count|Count|h2"};
    }
    void scan()
    {
        QFETCH(QStringList, entries);
        QFETCH(QStringList, expected);
        build(entries);
        QCOMPARE(summary(OrphanedLeftoverScannerService::scan().result()), expected);
    }

    // Both readings, cached and literal, must find the same. An equal-length identifier with the same
    // name must lose the tie the same way every time; "xy-data" does not reach the two-letter name.
    void cacheMatching()
    {
        build({"Preferences/com.example.app.plist=Example App", "Preferences/com.example.apq.plist=Example App", "Preferences/com.example.app.pro.plist",
               "Preferences/org.tiny.xy.plist=X-Y!", "Caches/com.example.app.ShipIt", "Caches/com.example.app.pro.cache",
               "Caches/Example App Cache", "Caches/net.nobody.cache", "Caches/xy-data", "Caches/org.tiny.xy"});
        const QList<OrphanedAppGroup> groups = OrphanedLeftoverScannerService::performScan(false);
        QCOMPARE(summary(groups), (QStringList{"com.example.app|Example App|m3", "org.tiny.xy|X-Y!|m2", "com.example.app.pro|Pro|m2"}));
        QCOMPARE(groups.constFirst().items.at(1).path(), lib(QStringLiteral("Caches/Example App Cache")));
        QCOMPARE(OrphanedLeftoverScannerService::performScan(true), groups);
    }

    // Items sort without regard to case (code-unit order would put "B" before "a"); empty leftovers
    // are listed too.
    void itemsSortedAndZeroSizesListed()
    {
        build({"Preferences/com.example.big.plist", "Caches/com.example.big.B", "Caches/com.example.big.a"});
        writeFile(lib(QStringLiteral("Caches/com.example.big")), QByteArray());
        makeFolder(lib(QStringLiteral("Containers/com.example.empty")));
        const QList<OrphanedAppGroup> groups = OrphanedLeftoverScannerService::scan().result();
        QCOMPARE(summary(groups), (QStringList{"com.example.empty|Empty|h1", "com.example.big|Big|m4"}));
        QCOMPARE(pathsOf(groups.at(1).items), (QStringList{lib("Caches/com.example.big"), lib("Caches/com.example.big.a"),
                                                           lib("Caches/com.example.big.B"), lib("Preferences/com.example.big.plist")}));
        QCOMPARE(groups.at(1).evidenceSummary, QStringLiteral("Related files in 4 locations: Caches, Preferences."));
        QCOMPARE(groups.at(0).totalSize(), 0);
    }

    void quickSizeLimit()
    {
        for (int i = 0; i < 600; ++i)
            writeFile(lib(QStringLiteral("Containers/com.example.many/f%1").arg(i)), "x");
        QCOMPARE(OrphanedLeftoverScannerService::scan().result().constFirst().totalSize(), 500);
    }
};

QTEST_GUILESS_MAIN(TestOrphanScan)
#include "tst_orphanscan.moc"
