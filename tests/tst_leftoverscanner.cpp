// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "services/LeftoverScannerService.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using Category = LeftoverCategory;

class LeftoverScannerTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;
    QString m_home;

    // "~/x" is under the home, "/x" under the root.
    QString at(const QString &path) const { return path.startsWith(QLatin1Char('~')) ? m_home + path.mid(1) : m_root + path; }

    QHash<QString, LeftoverItem> scan(const QString &name, std::optional<QString> identifier, const QString &fileName = QString()) const
    {
        const QString path = m_root + QStringLiteral("/Applications/") + (fileName.isEmpty() ? name : fileName) + QStringLiteral(".app");
        TestSupport::writeFile(path + QStringLiteral("/Contents/MacOS/bin"), "bin");
        QHash<QString, LeftoverItem> found;
        for (const LeftoverItem &item : LeftoverScannerService::scan({path, name, QUrl::fromLocalFile(path), identifier, 3}).result().items)
            found.insert(item.path(), item);
        return found;
    }

    // A Spotlight stand-in that runs this script; "answer" prints the answer file and records the query.
    void installMdfind(const QByteArray &script = "printf '%s' \"$*\" > query\ncat answer\n")
    {
        const QString tool = m_root + QStringLiteral("/usr/bin/mdfind");
        TestSupport::writeFile(tool, "#!/bin/sh\ncd \"$(dirname \"$0\")/../..\"\n" + script);
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

    // A listed folder's entry belongs to the app when it holds a term: the identifier, its last piece
    // or last two pieces, the name, in any case and only when longer than two characters.
    void searchTerms()
    {
        const std::tuple<const char *, const char *, const char *, bool> cases[] = {
            {"com.example.go", "Go", "Gopher Tools", false},
            {"com.example.go", "Go", "shared.EXAMPLE.Go.data", true},
            {"com.example.app", "Thing", "Happy App Data", true},
            {"myapp", "Other", "myapp-settings", true},
            {"org.x.y", "Fancy Tool", "fancy tool backups", true}};
        for (const auto &[identifier, name, entry, found] : cases) {
            const QString path = at(QStringLiteral("~/Library/Group Containers/") + QLatin1String(entry));
            TestSupport::writeFile(path + QStringLiteral("/x"), "x");
            QVERIFY2(scan(QLatin1String(name), QLatin1String(identifier)).contains(path) == found, entry);
        }
    }

    // One tree for every location family, found by the known-location table, by listing the folder or
    // by the launch items' contents. The ByHost prefix includes the dot and is case-sensitive; listings
    // skip hidden names and other vendors. A launch item names the app by a top-level string; a
    // malformed one does not. A link moves as itself and frees nothing, so it weighs nothing, and a
    // dangling one is no leftover.
    void locations()
    {
        const Category absent = Category::application;
        const QList<std::pair<const char *, Category>> rows = {
            {"~/Library/Application Support/My App", Category::applicationSupport},
            {"~/Library/Caches/MyAppFile", Category::caches},
            {"~/Library/Preferences/com.example.MyApp.plist", Category::preferences},
            {"~/Library/Preferences/com.example.MyApp.plist.lockfile", Category::preferences},
            {"/Library/Preferences/com.example.MyApp.plist", Category::preferences},
            {"~/Library/Preferences/ByHost/com.example.MyApp.ABCDEF.plist", Category::preferences},
            {"~/Library/Preferences/ByHost/com.example.MyAppX.plist", absent},
            {"~/Library/Preferences/ByHost/com.example.myapp.AB.plist", absent},
            {"~/Library/Containers/com.example.MyApp", Category::containers},
            {"~/Library/Logs/My App", Category::logs},
            {"~/Library/Saved Application State/com.example.MyApp.savedState", Category::savedState},
            {"~/Library/WebKit/com.example.MyApp", Category::webKit},
            {"~/Library/HTTPStorages/com.example.MyApp", Category::httpStorages},
            {"/Library/Internet Plug-Ins/My App.plugin", Category::plugins},
            {"~/Library/PreferencePanes/My App.prefPane", Category::preferencePanes},
            {"/Library/PrivilegedHelperTools/com.example.MyApp.helper", Category::privilegedHelperTools},
            {"~/Library/Group Containers/MyApp Helper", Category::groupContainers},
            {"/Library/LaunchAgents/MyApp Helper", Category::launchAgents},
            {"/Library/LaunchDaemons/MyApp Helper", Category::launchDaemons},
            {"/Library/LaunchDaemons/com.other.vendor", absent},
            {"~/Library/Application Support/MyApp Helper", Category::applicationSupport},
            {"~/Library/Caches/.myapp", absent}};
        for (const auto &[path, category] : rows)
            TestSupport::writeFile(at(QString::fromUtf8(path)) + QStringLiteral("/data"), "12345");

        const QByteArray head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict><key>Label</key><string>x</string>";
        const QString agents = at(QStringLiteral("~/Library/LaunchAgents/"));
        TestSupport::writeFile(agents + "com.other.agent.plist", head + "<key>Program</key><string>/opt/MyApp Tools/run</string></dict></plist>");
        TestSupport::writeFile(agents + "com.other.broken.plist", head + "<key>");

        const QString big = at(QStringLiteral("/huge.bin"));
        TestSupport::writeFile(big);
        QVERIFY(QFile::resize(big, 20'000'000'000));
        TestSupport::writeFile(at(QStringLiteral("/folder/inside")), QByteArray(5000, 'x'));
        TestSupport::makeSymlink(big, agents + "com.example.MyApp.plist");
        TestSupport::makeSymlink(at(QStringLiteral("/folder")), at(QStringLiteral("~/Library/Caches/com.example.MyApp")));
        TestSupport::makeSymlink(QStringLiteral("/nonexistent"), at(QStringLiteral("~/Library/Logs/com.example.MyApp")));

        const auto found = scan(QStringLiteral("My App"), QStringLiteral("com.example.MyApp"), QStringLiteral("MyAppFile"));
        QStringList expected, listed;
        const auto check = [&](const QString &path, Category category) {
            const QString shown = path.mid(m_root.size()) + u' ';
            expected.append(shown + (category == absent ? QStringLiteral("-") : LeftoverCategories::rawValue(category)));
            listed.append(shown + (found.contains(path) ? LeftoverCategories::rawValue(found.value(path).category) : QStringLiteral("-")));
        };
        for (const auto &[path, category] : rows)
            check(at(QString::fromUtf8(path)), category);
        check(agents + "com.other.agent.plist", Category::launchAgents);
        check(agents + "com.other.broken.plist", absent);
        check(agents + "com.example.MyApp.plist", Category::launchAgents);
        check(at(QStringLiteral("~/Library/Caches/com.example.MyApp")), Category::caches);
        check(at(QStringLiteral("~/Library/Logs/com.example.MyApp")), absent);
        QCOMPARE(listed, expected);
        QCOMPARE(found.value(agents + "com.example.MyApp.plist").size, 0);
        QCOMPARE(found.value(at(QStringLiteral("~/Library/Caches/com.example.MyApp"))).size, 0);
    }

    // The first step to reach a path decides its category, even when Spotlight returns it again; what
    // only Spotlight finds is filed by the Library folder in its path. Vanished paths and blank lines are
    // no leftovers, nor are the fragments Spotlight prints for a bundle whose name holds a line break:
    // only absolute paths count, whatever the working folder is.
    void spotlightAnswers()
    {
        const QStringList paths = {at("~/Library/Caches/com.example.MyApp"), at("~/Library/Containers/com.example.MyApp"),
                                   at("~/Library/LaunchAgents/com.example.MyApp.plist"), at("/Library/Application Support/MyApp"),
                                   at("~/Library/Containers/com.x.ext/Data"), at("~/Library/Group Containers/group.x/db"),
                                   at("~/Downloads/MyApp copy.app")};
        for (const QString &path : paths)
            TestSupport::writeFile(path, "x");
        TestSupport::writeFile(at(QStringLiteral("~/Documents/letter.txt")), "x");
        QStringList answer = paths;
        answer << QString() << at("~/Downloads/gone") << paths.at(2) << at("/Applications/MyApp.app") << "Documents" << "./Documents"
               << "../ann/Documents" << "~/Documents";
        TestSupport::writeFile(m_root + QStringLiteral("/answer"), answer.join(QLatin1Char('\n')).toUtf8());
        TestSupport::writeFile(at(QStringLiteral("/Applications/MyApp.app/Contents/MacOS/bin")), "bin");
        installMdfind();
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_home));
        QStringList listed;
        for (const LeftoverItem &item : LeftoverScannerService::scan(InstalledApp{at("/Applications/MyApp.app"), "MyApp", QUrl(), "com.example.MyApp", 3}).result().items)
            listed.append(item.path().mid(m_root.size()) + QLatin1Char(' ') + LeftoverCategories::rawValue(item.category));
        QDir::setCurrent(previous);
        const auto row = [](const char *path, Category category) { return QLatin1String(path) + QLatin1Char(' ') + LeftoverCategories::rawValue(category); };
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
        TestSupport::writeFile(m_root + QStringLiteral("/answer"), expected.keys().join(QLatin1Char('\n')).toUtf8());
        installMdfind();
        const auto found = scan(QStringLiteral("Spot"), QStringLiteral("com.example.spot"));
        for (auto it = expected.cbegin(); it != expected.cend(); ++it)
            QCOMPARE(found.value(it.key()).category, it.value());
    }

    // An index that never answers costs the scan its time-out, then nothing; a failing one (a quote
    // makes the query malformed) adds nothing of what it printed.
    void spotlightThatHangsOrFails()
    {
        installMdfind("exec sleep 600\n");
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(scan(QStringLiteral("Q"), QStringLiteral("com.example.q")).size(), 1);
        QVERIFY(timer.elapsed() < 60000);

        TestSupport::writeFile(at(QStringLiteral("/x")), "x");
        TestSupport::writeFile(m_root + QStringLiteral("/answer"), at(QStringLiteral("/x")).toUtf8());
        installMdfind("cat answer\nexit 1\n");
        QCOMPARE(scan(QStringLiteral("Q"), QStringLiteral("it's.quoted")).size(), 1);
    }

    void noIdentifierUsesNamesOnly()
    {
        const QStringList hits = {at("~/Library/Application Support/X Files"), at("~/Library/Caches/box"), at("~/Library/Logs/x.log")};
        const QStringList misses = {at("~/Library/Preferences/X.plist"), at("~/Library/Containers/X"), at("~/Library/Caches/.x-hidden")};
        for (const QString &path : hits + misses)
            TestSupport::writeFile(path, "x");
        TestSupport::writeFile(m_root + QStringLiteral("/answer"), misses.join(QLatin1Char('\n')).toUtf8());
        installMdfind();
        const auto found = scan(QStringLiteral("X"), std::nullopt);
        QCOMPARE(found.size(), hits.size() + 1);
        for (const QString &path : hits)
            QVERIFY2(found.contains(path) && found.value(path).category == Category::other, qPrintable(path));
    }

    // An empty name or identifier, or "..", would put the Library folder itself (or its parent) into
    // the result.
    void emptyNamesNeverProposeLibraryFolders()
    {
        for (const char *folder : {"Application Support", "Caches", "Logs", "Containers", "WebKit", "HTTPStorages",
                                   "PrivilegedHelperTools", "Preferences/ByHost"}) {
            TestSupport::writeFile(at(QStringLiteral("~/Library/") + QLatin1String(folder) + QStringLiteral("/com.other/x")), "x");
            TestSupport::writeFile(at(QStringLiteral("/Library/") + QLatin1String(folder) + QStringLiteral("/com.other/x")), "x");
        }
        for (const auto &[name, identifier] : {std::pair(QString(), std::optional(QString())), std::pair(QStringLiteral(".."), std::optional(QStringLiteral(".."))),
                                               std::pair(QString(), std::optional<QString>())})
            QCOMPARE(scan(name, identifier).keys(), QStringList{m_root + QStringLiteral("/Applications/") + name + QStringLiteral(".app")});
    }
};

QTEST_GUILESS_MAIN(LeftoverScannerTest)
#include "tst_leftoverscanner.moc"
