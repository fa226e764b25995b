// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "services/LeftoverScannerService.h"

#include <QDir>
#include <QElapsedTimer>
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
    QString at(const QString &path) const { return path.startsWith(QLatin1Char('~')) ? m_home + path.mid(1) : m_root + path; }

    InstalledApp makeApp(const QString &fileName, const QString &name, std::optional<QString> identifier) const
    {
        const QString path = m_root + QStringLiteral("/Applications/") + fileName;
        TestSupport::writeFile(path + QStringLiteral("/Contents/MacOS/bin"), "bin");
        return InstalledApp{path, name, QUrl::fromLocalFile(path), identifier, 3};
    }

    static QHash<QString, Category> scan(const InstalledApp &app)
    {
        QHash<QString, Category> found;
        for (const LeftoverItem &item : LeftoverScannerService::scan(app).result().items)
            found.insert(item.path(), item.category);
        return found;
    }

    // A Spotlight stand-in that records its arguments and prints the answer file.
    void installMdfind(const QByteArray &answer, int exitCode = 0)
    {
        TestSupport::writeFile(m_root + QStringLiteral("/answer"), answer);
        TestSupport::writeFile(m_root + QStringLiteral("/usr/bin/mdfind"), "#!/bin/sh\ncd \"$(dirname \"$0\")/../..\"\nprintf '%s' \"$*\" > query\ncat answer\nexit " + QByteArray::number(exitCode) + "\n");
        QFile::setPermissions(m_root + QStringLiteral("/usr/bin/mdfind"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
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
        QTest::newRow("last two pieces, any case") << go << "Go" << "shared.EXAMPLE.Go.data" << true;
        QTest::newRow("three-letter last piece") << "com.example.app" << "Thing" << "Happy App Data" << true;
        QTest::newRow("single-piece identifier") << "myapp" << "Other" << "myapp-settings" << true;
        QTest::newRow("name term") << "org.x.y" << "Fancy Tool" << "fancy tool backups" << true;
        QTest::newRow("other vendor") << "com.acme.notes" << "Acme Notes" << "com.zeta.tools" << false;
        QTest::newRow("every term too short") << "ab" << "Zz" << "xabzz" << false;
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
        QCOMPARE(result.value(path, Category::application), found ? Category::groupContainers : Category::application);
    }

    // One row per location family, found by the known-location table or by listing the folder. The
    // ByHost prefix includes the dot and is case-sensitive; listings skip hidden names and other vendors.
    void locations_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<Category>("category");
        const auto row = [](const char *path, Category category) { QTest::newRow(path) << QString::fromUtf8(path) << category; };
        const Category absent = Category::application;
        row("~/Library/Application Support/My App", Category::applicationSupport);
        row("~/Library/Caches/MyAppFile", Category::caches);
        row("~/Library/Preferences/com.example.MyApp.plist", Category::preferences);
        row("~/Library/Preferences/com.example.MyApp.plist.lockfile", Category::preferences);
        row("/Library/Preferences/com.example.MyApp.plist", Category::preferences);
        row("~/Library/Preferences/ByHost/com.example.MyApp.ABCDEF.plist", Category::preferences);
        row("~/Library/Preferences/ByHost/com.example.MyAppX.plist", absent);
        row("~/Library/Preferences/ByHost/com.example.myapp.AB.plist", absent);
        row("~/Library/Containers/com.example.MyApp", Category::containers);
        row("~/Library/Logs/My App", Category::logs);
        row("~/Library/Saved Application State/com.example.MyApp.savedState", Category::savedState);
        row("~/Library/WebKit/com.example.MyApp", Category::webKit);
        row("~/Library/HTTPStorages/com.example.MyApp", Category::httpStorages);
        row("/Library/Internet Plug-Ins/My App.plugin", Category::plugins);
        row("~/Library/PreferencePanes/My App.prefPane", Category::preferencePanes);
        row("/Library/PrivilegedHelperTools/com.example.MyApp.helper", Category::privilegedHelperTools);
        row("~/Library/Group Containers/MyApp Helper", Category::groupContainers);
        row("/Library/LaunchAgents/MyApp Helper", Category::launchAgents);
        row("/Library/LaunchDaemons/MyApp Helper", Category::launchDaemons);
        row("/Library/LaunchDaemons/com.other.vendor", absent);
        row("~/Library/Application Support/MyApp Helper", Category::applicationSupport);
        row("~/Library/Caches/.myapp", absent);
    }
    void locations()
    {
        QFETCH(QString, path);
        QFETCH(Category, category);
        TestSupport::writeFile(at(path) + QStringLiteral("/data"), "12345");
        const auto found = scan(makeApp(QStringLiteral("MyAppFile.app"), QStringLiteral("My App"), QStringLiteral("com.example.MyApp")));
        QCOMPARE(found.value(at(path), Category::application), category);
    }

    // A top-level string value names the app, and so does a program inside its bundle given only as
    // ProgramArguments[0] (found after every other pass); a malformed file does not.
    void launchItems()
    {
        const QByteArray head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict><key>Label</key><string>x</string>";
        const QByteArray exe = "<string>/Applications/MyApp.app/Contents/MacOS/MyApp</string>";
        const QString agents = at(QStringLiteral("~/Library/LaunchAgents/"));
        TestSupport::writeFile(agents + "com.other.agent.plist", head + "<key>Program</key>" + exe + "</dict></plist>");
        TestSupport::writeFile(agents + "com.other.nested.plist", head + "<key>ProgramArguments</key><array>" + exe + "</array></dict></plist>");
        TestSupport::writeFile(agents + "com.other.broken.plist", head + "<key>");
        const auto found = scan(makeApp(QStringLiteral("MyApp.app"), QStringLiteral("MyApp"), QStringLiteral("com.example.myapp")));
        QCOMPARE(found.size(), 3);
        QCOMPARE(found.value(agents + "com.other.agent.plist"), Category::launchAgents);
        QCOMPARE(found.value(agents + "com.other.nested.plist"), Category::launchAgents);
    }

    // The first step to reach a path decides its category, even when Spotlight returns it again; what
    // only Spotlight finds is filed by the Library folder in its path. Vanished paths, blank lines and
    // dangling links are no leftovers.
    void firstCategoryWinsAndOrder()
    {
        const QStringList paths = {at("~/Library/Caches/com.example.MyApp"), at("~/Library/Containers/com.example.MyApp"),
                                   at("~/Library/LaunchAgents/com.example.MyApp.plist"), at("/Library/Application Support/MyApp"),
                                   at("~/Library/Containers/com.x.ext/Data"), at("~/Library/Group Containers/group.x/db"),
                                   at("~/Downloads/MyApp copy.app")};
        for (const QString &path : paths)
            TestSupport::writeFile(path, "x");
        TestSupport::makeSymlink(QStringLiteral("/nonexistent"), at(QStringLiteral("~/Library/Logs/com.example.MyApp")));
        QStringList answer = paths;
        answer << QString() << at("~/Downloads/gone") << paths.at(2) << at("/Applications/MyApp.app");
        installMdfind(answer.join(QLatin1Char('\n')).toUtf8());
        QStringList listed;
        for (const LeftoverItem &item : LeftoverScannerService::scan(makeApp(QStringLiteral("MyApp.app"), QStringLiteral("MyApp"), QStringLiteral("com.example.MyApp"))).result().items)
            listed.append(item.path().mid(m_root.size()) + QLatin1Char(' ') + QString::number(int(item.category)));
        const auto row = [](const char *path, Category category) { return QLatin1String(path) + QLatin1Char(' ') + QString::number(int(category)); };
        QCOMPARE(listed, QStringList({row("/Applications/MyApp.app", Category::application),
                                      row("/Library/Application Support/MyApp", Category::applicationSupport),
                                      row("/Users/ann/Downloads/MyApp copy.app", Category::other),
                                      row("/Users/ann/Library/Caches/com.example.MyApp", Category::caches),
                                      row("/Users/ann/Library/Containers/com.example.MyApp", Category::containers),
                                      row("/Users/ann/Library/Containers/com.x.ext/Data", Category::containers),
                                      row("/Users/ann/Library/Group Containers/group.x/db", Category::groupContainers),
                                      row("/Users/ann/Library/LaunchAgents/com.example.MyApp.plist", Category::launchAgents)}));
        QCOMPARE(TestSupport::readBytes(m_root + QStringLiteral("/query")), QByteArray("kMDItemCFBundleIdentifier == 'com.example.MyApp'"));
    }

    // A Spotlight path that holds two Library folder names is filed by the one the fragment table
    // lists first; every pair of fragments is tried, so no two rows can trade places unnoticed.
    void spotlightFragmentsKeepTheirOrder()
    {
        const QList<std::pair<const char *, Category>> fragments = {
            {"Containers", Category::containers}, {"Group Containers", Category::groupContainers},
            {"Caches", Category::caches}, {"Preferences", Category::preferences},
            {"Application Support", Category::applicationSupport}, {"Logs", Category::logs},
            {"LaunchAgents", Category::launchAgents}, {"LaunchDaemons", Category::launchDaemons},
            {"PrivilegedHelperTools", Category::privilegedHelperTools}, {"Saved Application State", Category::savedState}};
        QHash<QString, Category> expected;
        for (qsizetype first = 0; first < fragments.size(); ++first) {
            for (qsizetype second = first + 1; second < fragments.size(); ++second) {
                // The later row's folder comes first in the path, so path order cannot stand in for row order.
                const QString path = at(QStringLiteral("/Volumes/Spot/%1/a/%2/b").arg(QLatin1String(fragments.at(second).first),
                                                                                      QLatin1String(fragments.at(first).first)));
                TestSupport::writeFile(path, "x");
                expected.insert(path, fragments.at(first).second);
            }
        }
        installMdfind(expected.keys().join(QLatin1Char('\n')).toUtf8());
        const auto found = scan(makeApp(QStringLiteral("Spot.app"), QStringLiteral("Spot"), QStringLiteral("com.example.spot")));
        for (auto it = expected.cbegin(); it != expected.cend(); ++it)
            QCOMPARE(found.value(it.key(), Category::application), it.value());
    }

    // A bundle whose name holds a line break makes Spotlight print fragments; only absolute paths
    // are results, whatever the working folder is.
    void spotlightKeepsOnlyAbsolutePaths()
    {
        TestSupport::writeFile(at(QStringLiteral("~/Documents/letter.txt")), "x");
        TestSupport::writeFile(at(QStringLiteral("~/Library/Caches/found")), "x");
        installMdfind("Documents\n./Documents\n../ann/Documents\n~/Documents\n" + at(QStringLiteral("~/Library/Caches/found")).toUtf8() + '\n');
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_home));
        const auto found = scan(makeApp(QStringLiteral("Q.app"), QStringLiteral("Q"), QStringLiteral("com.example.q")));
        QDir::setCurrent(previous);
        QCOMPARE(found.keys().size(), 2);
        QCOMPARE(found.value(at(QStringLiteral("~/Library/Caches/found"))), Category::caches);
    }

    // An index that never answers costs the scan its time-out, then nothing.
    void spotlightThatHangsIsGivenUp()
    {
        TestSupport::writeFile(m_root + QStringLiteral("/usr/bin/mdfind"), "#!/bin/sh\nexec sleep 600\n");
        QFile::setPermissions(m_root + QStringLiteral("/usr/bin/mdfind"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(scan(makeApp(QStringLiteral("Q.app"), QStringLiteral("Q"), QStringLiteral("com.example.q"))).size(), 1);
        QVERIFY(timer.elapsed() < 60000);
    }

    // A launch agent that links to a huge file, or a cache that links to a folder, moves as a link and
    // frees nothing, so it weighs nothing.
    void linkedItemsCountAsLinks()
    {
        const QString big = at(QStringLiteral("/huge.bin"));
        TestSupport::writeFile(big);
        QVERIFY(QFile::resize(big, 20'000'000'000));
        TestSupport::writeFile(at(QStringLiteral("/folder/inside")), QByteArray(5000, 'x'));
        TestSupport::makeSymlink(big, at(QStringLiteral("~/Library/LaunchAgents/com.example.q.plist")));
        TestSupport::makeSymlink(at(QStringLiteral("/folder")), at(QStringLiteral("~/Library/Caches/com.example.q")));
        QHash<QString, qint64> sizes;
        for (const LeftoverItem &item : LeftoverScannerService::scan(makeApp(QStringLiteral("Q.app"), QStringLiteral("Q"), QStringLiteral("com.example.q"))).result().items)
            sizes.insert(item.path(), item.size);
        QCOMPARE(sizes.value(at(QStringLiteral("~/Library/LaunchAgents/com.example.q.plist")), -1), 0);
        QCOMPARE(sizes.value(at(QStringLiteral("~/Library/Caches/com.example.q")), -1), 0);
    }

    // A quote makes the query malformed; the failing tool's output must not be taken.
    void spotlightFailureAddsNothing()
    {
        TestSupport::writeFile(at(QStringLiteral("/x")), "x");
        installMdfind(at(QStringLiteral("/x")).toUtf8() + '\n', 1);
        QCOMPARE(scan(makeApp(QStringLiteral("Q.app"), QStringLiteral("Q"), QStringLiteral("it's.quoted"))).size(), 1);
    }

    void noIdentifierUsesNamesOnly()
    {
        const QStringList hits = {at("~/Library/Application Support/X Files"), at("~/Library/Caches/box"), at("~/Library/Logs/x.log")};
        const QStringList misses = {at("~/Library/Preferences/X.plist"), at("~/Library/Containers/X"), at("~/Library/Caches/.x-hidden")};
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
        QCOMPARE(scan(InstalledApp{path, name, QUrl::fromLocalFile(path), identifier, 0}).keys(), QStringList{path});
    }
};

QTEST_GUILESS_MAIN(LeftoverScannerTest)
#include "tst_leftoverscanner.moc"
