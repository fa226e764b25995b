// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "services/LeftoverScannerService.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using Category = LeftoverCategory;
Q_DECLARE_METATYPE(LeftoverCategory)

class LeftoverScannerTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;
    QString m_home;

    // "~/x" is under the home, "/x" under the root.
    QString at(const QString &macPath) const
    {
        return macPath.startsWith(QLatin1Char('~')) ? m_home + macPath.mid(1) : m_root + macPath;
    }

    InstalledApp makeApp(const QString &fileName, const QString &name, std::optional<QString> identifier) const
    {
        const QString path = m_root + QStringLiteral("/Applications/") + fileName;
        TestSupport::writeFile(path + QStringLiteral("/Contents/MacOS/bin"), "bin");
        return InstalledApp{path, name, QUrl::fromLocalFile(path), identifier, 3};
    }

    static QHash<QString, Category> scan(const InstalledApp &app, ScanResult *full = nullptr)
    {
        const ScanResult result = LeftoverScannerService::scan(app).result();
        QHash<QString, Category> found;
        for (const LeftoverItem &item : result.items) {
            [&] { QVERIFY2(!found.contains(item.path()), qPrintable(item.path())); }();
            found.insert(item.path(), item.category);
        }
        if (full)
            *full = result;
        return found;
    }

    // A Spotlight stand-in that records its arguments and prints the answer file.
    void installMdfind(const QByteArray &answer, int exitCode = 0)
    {
        const QString tool = m_root + QStringLiteral("/usr/bin/mdfind");
        TestSupport::writeFile(m_root + QStringLiteral("/answer"), answer);
        TestSupport::writeFile(tool, QByteArrayLiteral("#!/bin/sh\nprintf '%s' \"$*\" > \"$(dirname \"$0\")/../../query\"\n"
                                                       "cat \"$(dirname \"$0\")/../../answer\"\nexit ")
                                         + QByteArray::number(exitCode) + "\n");
        QFile::setPermissions(tool, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

private Q_SLOTS:
    void init()
    {
        QVERIFY(m_dir.isValid());
        // A fresh sample Mac per case: each one proves its own files.
        m_root = TestSupport::caseFolder(m_dir);
        m_home = TestSupport::useSampleLayout(m_root);
    }

    void searchTerms_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<bool>("found");
        const QString go = QStringLiteral("com.example.go");
        QTest::newRow("two-letter name dropped") << go << "Go" << "Gopher Tools" << false;
        QTest::newRow("last two pieces kept") << go << "Go" << "shared.example.go.data" << true;
        QTest::newRow("whole identifier, any case") << go << "Go" << "COM.Example.GO.sync" << true;
        QTest::newRow("three-letter last piece") << "com.example.app" << "Thing" << "Happy App Data" << true;
        QTest::newRow("single-piece identifier") << "myapp" << "Other" << "myapp-settings" << true;
        QTest::newRow("name term") << "org.x.y" << "Fancy Tool" << "fancy tool backups" << true;
        QTest::newRow("other vendor") << "com.acme.notes" << "Acme Notes" << "com.zeta.tools" << false;
        QTest::newRow("short last piece hits another vendor") << "com.acme.notes" << "Acme Notes"
                                                              << "com.other.stickynotes" << true;
        QTest::newRow("every term too short") << "ab" << "Zz" << "xabzz" << false;
        QTest::newRow("three characters is enough") << "a.b" << "Zz" << "xa.by" << true;
    }
    void searchTerms()
    {
        QFETCH(QString, identifier);
        QFETCH(QString, name);
        QFETCH(QString, entry);
        QFETCH(bool, found);
        const QString path = at(QStringLiteral("~/Library/Group Containers/") + entry);
        TestSupport::writeFile(path + QStringLiteral("/x"), "x");
        const auto result = scan(makeApp(name + QStringLiteral(".app"), name, identifier));
        QCOMPARE(result.contains(path), found);
        if (found)
            QCOMPARE(result.value(path), Category::groupContainers);
    }

    void knownLocations_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<Category>("category");
        const auto row = [](const char *tag, const char *path, Category category) {
            QTest::newRow(tag) << QString::fromUtf8(path) << category;
        };
        row("support by name", "~/Library/Application Support/My App", Category::applicationSupport);
        row("support by id", "~/Library/Application Support/com.example.MyApp", Category::applicationSupport);
        row("caches by id", "~/Library/Caches/com.example.MyApp", Category::caches);
        row("caches by name", "~/Library/Caches/My App", Category::caches);
        row("caches by file name", "~/Library/Caches/MyAppFile", Category::caches);
        row("preferences", "~/Library/Preferences/com.example.MyApp.plist", Category::preferences);
        row("lock file", "~/Library/Preferences/com.example.MyApp.plist.lockfile", Category::preferences);
        row("by host", "~/Library/Preferences/ByHost/com.example.MyApp.ABCDEF.plist", Category::preferences);
        row("container", "~/Library/Containers/com.example.MyApp", Category::containers);
        row("logs by name", "~/Library/Logs/My App", Category::logs);
        row("logs by id", "~/Library/Logs/com.example.MyApp", Category::logs);
        row("saved state", "~/Library/Saved Application State/com.example.MyApp.savedState", Category::savedState);
        row("webkit", "~/Library/WebKit/com.example.MyApp", Category::webKit);
        row("http storages", "~/Library/HTTPStorages/com.example.MyApp", Category::httpStorages);
        row("user plug-in", "~/Library/Internet Plug-Ins/My App.plugin", Category::plugins);
        row("system plug-in", "/Library/Internet Plug-Ins/My App.plugin", Category::plugins);
        row("user pane", "~/Library/PreferencePanes/My App.prefPane", Category::preferencePanes);
        row("system pane", "/Library/PreferencePanes/My App.prefPane", Category::preferencePanes);
        row("system support by name", "/Library/Application Support/My App", Category::applicationSupport);
        row("system support by id", "/Library/Application Support/com.example.MyApp", Category::applicationSupport);
        row("system preferences", "/Library/Preferences/com.example.MyApp.plist", Category::preferences);
        row("helper folder", "/Library/PrivilegedHelperTools/com.example.MyApp", Category::privilegedHelperTools);
        row("helper tool", "/Library/PrivilegedHelperTools/com.example.MyApp.helper", Category::privilegedHelperTools);
    }
    void knownLocations()
    {
        QFETCH(QString, path);
        QFETCH(Category, category);
        // Terms are kept from matching so that only the table can reach the path. Sizes and the admin
        // mark are the scan command's and tst_records' cases.
        TestSupport::writeFile(at(path) + QStringLiteral("/data"), "12345");
        const auto found = scan(makeApp(QStringLiteral("MyAppFile.app"), QStringLiteral("My App"), QStringLiteral("com.example.MyApp")));
        QVERIFY2(found.contains(at(path)), qPrintable(path));
        QCOMPARE(found.value(at(path)), category);
    }

    void byHostPrefixIncludesTheDot()
    {
        const QString byHost = QStringLiteral("~/Library/Preferences/ByHost/");
        for (const char *name : {"com.example.MyApp.ABCDEF.plist", "com.example.MyAppX.plist", "com.example.myapp.AB.plist"})
            TestSupport::writeFile(at(byHost + QLatin1String(name)), "p");
        const auto found = scan(makeApp(QStringLiteral("MyApp.app"), QStringLiteral("Q"), QStringLiteral("com.example.MyApp")));
        QVERIFY(found.contains(at(byHost + QStringLiteral("com.example.MyApp.ABCDEF.plist"))));
        QVERIFY(!found.contains(at(byHost + QStringLiteral("com.example.MyAppX.plist"))));
        // The prefix test is case-sensitive, unlike the listings.
        QVERIFY(!found.contains(at(byHost + QStringLiteral("com.example.myapp.AB.plist"))));
    }

    void listings_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<Category>("category");
        QTest::newRow("group containers") << "~/Library/Group Containers" << Category::groupContainers;
        QTest::newRow("user agents") << "~/Library/LaunchAgents" << Category::launchAgents;
        QTest::newRow("system agents") << "/Library/LaunchAgents" << Category::launchAgents;
        QTest::newRow("daemons") << "/Library/LaunchDaemons" << Category::launchDaemons;
        QTest::newRow("user audio") << "~/Library/Audio/Plug-Ins" << Category::plugins;
        QTest::newRow("system audio") << "/Library/Audio/Plug-Ins" << Category::plugins;
        QTest::newRow("input methods") << "~/Library/Input Methods" << Category::plugins;
        QTest::newRow("services") << "~/Library/Services" << Category::plugins;
        QTest::newRow("scripts") << "~/Library/Scripts" << Category::plugins;
        QTest::newRow("caches") << "~/Library/Caches" << Category::caches;
        QTest::newRow("support") << "~/Library/Application Support" << Category::applicationSupport;
    }
    void listings()
    {
        QFETCH(QString, folder);
        QFETCH(Category, category);
        const QString hit = at(folder + QStringLiteral("/Sparkle Helper"));
        const QString miss = at(folder + QStringLiteral("/com.other.vendor"));
        const QString hidden = at(folder + QStringLiteral("/.sparkle"));
        for (const QString &path : {hit, miss, hidden})
            TestSupport::writeFile(path, "x");
        const auto found = scan(makeApp(QStringLiteral("Sparkle.app"), QStringLiteral("Sparkle"), QStringLiteral("com.example.sparkle")));
        QCOMPARE(found.value(hit, Category::application), category);
        QVERIFY(!found.contains(miss));
        QVERIFY(!found.contains(hidden));
    }

    void launchItems_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<bool>("found");
        const QByteArray head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">";
        const QByteArray byProgram = head + "<dict><key>Label</key><string>com.other.agent</string><key>Program</key>"
                                            "<string>/Applications/MyApp.app/Contents/MacOS/MyApp</string></dict></plist>";
        const QByteArray nested = head + "<dict><key>Label</key><string>com.other.agent</string><key>ProgramArguments</key>"
                                         "<array><string>/Applications/MyApp.app/Contents/MacOS/MyApp</string></array></dict></plist>";
        const QByteArray array = head + "<array><string>myapp</string></array></plist>";
        QTest::newRow("top-level string value") << "com.other.agent.plist" << byProgram << true;
        QTest::newRow("nested only, name unrelated") << "com.other.agent.plist" << nested << false;
        QTest::newRow("nested only, name matches") << "com.example.myapp.agent.plist" << nested << true;
        QTest::newRow("malformed, name matches") << "com.example.myapp.broken.plist" << QByteArray(head + "<dict><key>") << true;
        QTest::newRow("malformed, name unrelated") << "com.other.broken.plist" << QByteArray(head + "<dict><key>") << false;
        QTest::newRow("not a dictionary") << "com.other.array.plist" << array << false;
    }
    void launchItems()
    {
        QFETCH(QString, fileName);
        QFETCH(QByteArray, contents);
        QFETCH(bool, found);
        // The daemons folder is listed again later; the launch-item step must be the one that decides.
        const QString agent = at(QStringLiteral("~/Library/LaunchAgents/") + fileName);
        const QString daemon = at(QStringLiteral("/Library/LaunchDaemons/") + fileName);
        TestSupport::writeFile(agent, contents);
        TestSupport::writeFile(daemon, contents);
        const auto result = scan(makeApp(QStringLiteral("MyApp.app"), QStringLiteral("MyApp"), QStringLiteral("com.example.myapp")));
        QCOMPARE(result.contains(agent), found);
        QCOMPARE(result.contains(daemon), found);
        if (found)
            QCOMPARE(result.value(daemon), Category::launchDaemons);
    }

    void firstCategoryWinsAndOrder()
    {
        const QString cache = at(QStringLiteral("~/Library/Caches/com.example.MyApp"));
        const QString container = at(QStringLiteral("~/Library/Containers/com.example.MyApp"));
        const QString agent = at(QStringLiteral("~/Library/LaunchAgents/com.example.MyApp.plist"));
        const QString support = at(QStringLiteral("/Library/Application Support/MyApp"));
        for (const QString &path : {cache + "/a", container + "/b", agent, support + "/c"})
            TestSupport::writeFile(path, "x");
        // Spotlight returns everything again, under paths that its own table would file elsewhere.
        installMdfind((QStringList{cache, container, agent, support, agent}.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8());
        ScanResult result;
        const auto found = scan(makeApp(QStringLiteral("MyApp.app"), QStringLiteral("MyApp"), QStringLiteral("com.example.MyApp")), &result);
        QCOMPARE(found.value(cache), Category::caches);
        QCOMPARE(found.value(container), Category::containers);
        QCOMPARE(found.value(agent), Category::launchAgents);
        QCOMPARE(found.value(support), Category::applicationSupport);
        QCOMPARE(result.items.size(), 5);
        // Sorted by path, letter case ignored: /Applications, /Library, /Users.
        QStringList paths;
        for (const LeftoverItem &item : result.items)
            paths.append(item.path().mid(m_root.size()));
        QCOMPARE(paths.constFirst(), QStringLiteral("/Applications/MyApp.app"));
        QCOMPARE(paths.at(1), QStringLiteral("/Library/Application Support/MyApp"));
        QVERIFY(std::is_sorted(paths.cbegin(), paths.cend(),
                               [](const QString &a, const QString &b) { return a.compare(b, Qt::CaseInsensitive) < 0; }));
    }

    // Filed by the Library folder in the path, the first marker that fits; one row per kind of marker.
    void spotlight_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<Category>("category");
        QTest::newRow("container") << "~/Library/Containers/com.x.ext/Data" << Category::containers;
        QTest::newRow("group container") << "~/Library/Group Containers/group.x/db" << Category::groupContainers;
        QTest::newRow("caches") << "~/Library/Caches/Spotlight/x.index" << Category::caches;
        QTest::newRow("daemons") << "/Library/LaunchDaemons/sub/x" << Category::launchDaemons;
        QTest::newRow("webkit falls to other") << "~/Library/WebKit/sub/x" << Category::other;
        QTest::newRow("downloads copy") << "~/Downloads/Indexed.app" << Category::other;
    }
    void spotlight()
    {
        QFETCH(QString, path);
        QFETCH(Category, category);
        const InstalledApp app = makeApp(QStringLiteral("Indexed.app"), QStringLiteral("Indexed"), QStringLiteral("org.sample.Indexed"));
        const QString gone = at(QStringLiteral("~/Downloads/deleted-since"));
        TestSupport::writeFile(at(path), "spot");
        installMdfind((app.bundlePath() + "\n\n" + at(path) + "\n" + gone + "\n").toUtf8());
        const auto found = scan(app);
        QCOMPARE(found.value(at(path), Category::application), category);
        QCOMPARE(found.value(app.bundlePath()), Category::application);
        QVERIFY(!found.contains(gone));
        QFile query(m_root + QStringLiteral("/query"));
        QVERIFY(query.open(QIODevice::ReadOnly));
        QCOMPARE(query.readAll(), QByteArray("kMDItemCFBundleIdentifier == 'org.sample.Indexed'"));
    }

    // A quote makes the query malformed; the failing tool's output must not be taken (the runner's own
    // failures are covered in its tests).
    void spotlightFailureAddsNothing()
    {
        const QString file = at(QStringLiteral("/x"));
        TestSupport::writeFile(file, "x");
        installMdfind(file.toUtf8() + '\n', 1);
        QCOMPARE(scan(makeApp(QStringLiteral("Q.app"), QStringLiteral("Q"), QStringLiteral("it's.quoted"))).size(), 1);
    }

    void noIdentifierUsesNamesOnly()
    {
        const QStringList hits = {at("~/Library/Application Support/X Files"), at("~/Library/Caches/box"),
                                  at("~/Library/Logs/x.log")};
        const QStringList misses = {at("~/Library/Preferences/X.plist"), at("~/Library/Containers/X"),
                                    at("~/Library/Group Containers/X"), at("~/Library/Caches/.x-hidden")};
        for (const QString &path : hits + misses)
            TestSupport::writeFile(path, "x");
        installMdfind(misses.join(QLatin1Char('\n')).toUtf8());
        const auto found = scan(makeApp(QStringLiteral("X.app"), QStringLiteral("X"), std::nullopt));
        QCOMPARE(found.size(), hits.size() + 1);
        for (const QString &path : hits)
            QCOMPARE(found.value(path, Category::application), Category::other);
    }

    void emptyNamesNeverProposeLibraryFolders_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<std::optional<QString>>("identifier");
        QTest::newRow("empty identifier") << "" << std::optional<QString>(QString());
        QTest::newRow("dot-dot") << ".." << std::optional<QString>(QStringLiteral(".."));
        QTest::newRow("no identifier, empty name") << "" << std::optional<QString>();
    }
    void emptyNamesNeverProposeLibraryFolders()
    {
        QFETCH(QString, name);
        QFETCH(std::optional<QString>, identifier);
        for (const char *folder : {"Application Support", "Caches", "Logs", "Containers", "WebKit", "HTTPStorages",
                                   "PrivilegedHelperTools", "Preferences/ByHost"}) {
            TestSupport::writeFile(at(QStringLiteral("~/Library/") + QLatin1String(folder) + QStringLiteral("/com.other/x")), "x");
            TestSupport::writeFile(at(QStringLiteral("/Library/") + QLatin1String(folder) + QStringLiteral("/com.other/x")), "x");
        }
        const QString path = m_root + QStringLiteral("/Applications/.app");
        TestSupport::makeFolder(path);
        const auto found = scan(InstalledApp{path, name, QUrl::fromLocalFile(path), identifier, 0});
        for (auto it = found.cbegin(); it != found.cend(); ++it)
            QVERIFY2(it.key() == path, qPrintable(it.key()));
    }

    // A link that leads nowhere is not a leftover; links inside a leftover are the size walk's tests.
    void danglingLinkIsNoLeftover()
    {
        const QString dangling = at(QStringLiteral("~/Library/Logs/com.example.MyApp"));
        TestSupport::makeSymlink(QStringLiteral("/nonexistent"), dangling);
        QVERIFY(!scan(makeApp(QStringLiteral("MyApp.app"), QStringLiteral("MyApp"), QStringLiteral("com.example.MyApp"))).contains(dangling));
    }
};

QTEST_GUILESS_MAIN(LeftoverScannerTest)
#include "tst_leftoverscanner.moc"
