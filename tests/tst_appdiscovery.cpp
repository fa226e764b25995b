// SPDX-License-Identifier: MIT
#include "PlistBytes.h"
#include "TestSupport.h"
#include "models/InstalledApp.h"
#include "services/AppDiscoveryService.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using TestSupport::makeFolder;
using TestSupport::writeFile;
using PlistBytes::xmlDictionary;

namespace {

// A minimal bundle: an executable of payload bytes and, unless infoList is null, Contents/Info.plist.
void writeBundle(const QString &bundle, const QByteArray &infoList, int payload = 100)
{
    writeFile(bundle + QStringLiteral("/Contents/MacOS/main"), QByteArray(payload, 'x'));
    if (!infoList.isNull())
        writeFile(bundle + QStringLiteral("/Contents/Info.plist"), infoList);
}

QStringList names(const QList<InstalledApp> &apps)
{
    QStringList out;
    for (const InstalledApp &app : apps)
        out.append(app.name);
    return out;
}

} // namespace

class AppDiscoveryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Orders below are those of the C locale's stand-in, whatever language the machine runs in.
    void initTestCase() { QLocale::setDefault(QLocale::c()); }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        m_root = m_folder->path() + QStringLiteral("/root");
        m_home = m_root + QStringLiteral("/Users/ann");
        makeFolder(m_home);
        TestSupport::useLayout(m_root, m_home);
    }

    void recordNameAndIdentifier_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QByteArray>("infoList");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("identifier"); // null: absent
        const QString none;
        QTest::newRow("no info list") << "Foo Bar.app" << QByteArray() << "Foo Bar" << none;
        QTest::newRow("both names") << "F.app" << xmlDictionary("<key>CFBundleDisplayName</key><string>Shown</string><key>CFBundleName</key><string>Short</string><key>CFBundleIdentifier</key><string>com.Example.F</string>") << "Short" << "com.Example.F";
        QTest::newRow("display name only") << "F.app" << xmlDictionary("<key>CFBundleDisplayName</key><string>Shown</string>") << "Shown" << none;
        QTest::newRow("numeric name falls to display") << "F.app" << xmlDictionary("<key>CFBundleName</key><integer>42</integer><key>CFBundleDisplayName</key><string>Shown</string>") << "Shown" << none;
        QTest::newRow("numeric names fall to file name") << "File Name.app" << xmlDictionary("<key>CFBundleName</key><integer>42</integer><key>CFBundleDisplayName</key><true/>") << "File Name" << none;
        QTest::newRow("empty name accepted") << "F.app" << xmlDictionary("<key>CFBundleName</key><string></string><key>CFBundleDisplayName</key><string>Shown</string>") << "" << none;
        QTest::newRow("numeric identifier is absent") << "F.app" << xmlDictionary("<key>CFBundleName</key><string>N</string><key>CFBundleIdentifier</key><integer>7</integer>") << "N" << none;
        QTest::newRow("malformed info list") << "Broken.app" << QByteArray("<?xml version=\"1.0\"?><plist><dict><key>CFBundleName</key>") << "Broken" << none;
        QTest::newRow("info list is an array") << "Arr.app" << PlistBytes::nestedXmlArrays(1) << "Arr" << none;
        QTest::newRow("binary info list") << "B.app" << PlistBytes::binary({PlistBytes::Dictionary{{1, 2}, {3, 4}}, PlistBytes::String{"CFBundleName"}, PlistBytes::String{"CFBundleIdentifier"}, PlistBytes::String{"Bright"}, PlistBytes::String{"io.bright"}}) << "Bright" << "io.bright";
    }
    void recordNameAndIdentifier()
    {
        QFETCH(QString, fileName);
        QFETCH(QByteArray, infoList);
        QFETCH(QString, name);
        QFETCH(QString, identifier);
        const QString bundle = m_folder->path() + QLatin1Char('/') + fileName;
        writeBundle(bundle, infoList);
        const auto app = InstalledApp::from(bundle);
        QVERIFY(app);
        QCOMPARE(app->name, name);
        QCOMPARE(app->bundleIdentifier.has_value(), !identifier.isNull());
        if (!identifier.isNull())
            QCOMPARE(*app->bundleIdentifier, identifier);
        QCOMPARE(app->id, bundle);
        QCOMPARE(app->path, QUrl::fromLocalFile(bundle));
        QCOMPARE(app->size, qint64(100 + infoList.size()));
    }

    void recordRefusalsAndIdentity()
    {
        const QString base = m_folder->path();
        writeBundle(base + QStringLiteral("/Foo.APP"), xmlDictionary("<key>CFBundleName</key><string>Foo</string>"));
        QVERIFY(!InstalledApp::from(base + QStringLiteral("/Foo.APP")));
        QVERIFY(!InstalledApp::from(base + QStringLiteral("/Foo")));

        // A missing bundle, or a plain file named like one, is still a record: file name, nothing else.
        const auto missing = InstalledApp::from(base + QStringLiteral("/Gone.app"));
        QVERIFY(missing);
        QCOMPARE(missing->name, QStringLiteral("Gone"));
        QVERIFY(!missing->bundleIdentifier);
        QCOMPARE(missing->size, 0);
        QCOMPARE(missing->formattedSize(), QStringLiteral("Zero KB"));
        writeFile(base + QStringLiteral("/X.app"), "not a bundle");
        const auto plain = InstalledApp::from(QUrl::fromLocalFile(base + QStringLiteral("/X.app/")));
        QVERIFY(plain);
        QCOMPARE(plain->id, base + QStringLiteral("/X.app"));
        QCOMPARE(plain->name, QStringLiteral("X"));
        QCOMPARE(plain->size, 0);

        // Same bundle, different size: same identity; an equal record hashes equal.
        const QString bundle = base + QStringLiteral("/Grow.app");
        writeBundle(bundle, QByteArray());
        const auto before = InstalledApp::from(bundle);
        writeFile(bundle + QStringLiteral("/Contents/more"), "1234");
        const auto after = InstalledApp::from(bundle);
        QCOMPARE(before->id, after->id);
        QCOMPARE(after->size, before->size + 4);
        QCOMPARE(*after, *InstalledApp::from(bundle));
        QCOMPARE(qHash(*after), qHash(*InstalledApp::from(bundle)));
    }

    void discoveryEdgeCases()
    {
        const QString system = m_root + QStringLiteral("/Applications");
        writeBundle(system + QStringLiteral("/zeta.app"), QByteArray());
        writeBundle(system + QStringLiteral("/Alpha.app"), QByteArray());
        writeBundle(system + QStringLiteral("/Notes.app"), QByteArray());
        writeBundle(system + QStringLiteral("/Utilities/Terminal.app"), QByteArray());
        writeBundle(system + QStringLiteral("/.Hidden.app"), QByteArray());
        writeBundle(system + QStringLiteral("/Loud.APP"), QByteArray());
        writeBundle(system + QStringLiteral("/Folder"), QByteArray());
        writeFile(system + QStringLiteral("/Plain.app"), "x");
        writeFile(system + QStringLiteral("/readme.txt"), "x");

        // No ~/Applications: the system folder alone, no error.
        QCOMPARE(names(AppDiscoveryService::discoverInstalledApps()),
                 (QStringList{QStringLiteral("Alpha"), QStringLiteral("Notes"), QStringLiteral("Plain"), QStringLiteral("zeta")}));

        const QString home = m_home + QStringLiteral("/Applications");
        writeBundle(home + QStringLiteral("/notes.app"), QByteArray());
        writeBundle(home + QStringLiteral("/beta.app"), QByteArray());
        const QList<InstalledApp> apps = AppDiscoveryService::discoverInstalledApps();
        QCOMPARE(names(apps), (QStringList{QStringLiteral("Alpha"), QStringLiteral("beta"), QStringLiteral("Notes"),
                                           QStringLiteral("notes"), QStringLiteral("Plain"), QStringLiteral("zeta")}));
        // Equal names keep discovery order: the system folder first.
        QCOMPARE(apps.at(2).id, system + QStringLiteral("/Notes.app"));
        QCOMPARE(apps.at(3).id, home + QStringLiteral("/notes.app"));

        // Without the system folder the home folder is still listed.
        QVERIFY(QDir(system).rename(system, m_root + QStringLiteral("/Elsewhere")));
        QCOMPARE(names(AppDiscoveryService::discoverInstalledApps()), (QStringList{QStringLiteral("beta"), QStringLiteral("notes")}));
    }

    void sameFolderListedOnce()
    {
        // A home folder equal to the root makes both applications folders the same path strings.
        writeBundle(m_root + QStringLiteral("/Applications/Only.app"), QByteArray());
        TestSupport::useLayout(m_root, m_root + QLatin1Char('/'));
        QCOMPARE(names(AppDiscoveryService::discoverInstalledApps()), QStringList{QStringLiteral("Only")});
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_root;
    QString m_home;
};

QTEST_GUILESS_MAIN(AppDiscoveryTest)
#include "tst_appdiscovery.moc"
