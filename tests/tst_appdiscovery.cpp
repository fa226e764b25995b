// SPDX-License-Identifier: MIT
#include "PlistBytes.h"
#include "TestSupport.h"
#include "models/InstalledApp.h"
#include "services/AppDiscoveryService.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using TestSupport::writeFile;
using PlistBytes::xmlDictionary;

class AppDiscoveryTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;
    QString m_home;

    // A minimal bundle: an executable of 100 bytes.
    static void writeBundle(const QString &bundle) { writeFile(bundle + QStringLiteral("/Contents/MacOS/main"), QByteArray(100, 'x')); }
    static QStringList names()
    {
        QStringList out;
        for (const InstalledApp &app : AppDiscoveryService::discoverInstalledApps())
            out.append(app.name);
        return out;
    }

private Q_SLOTS:
    // Orders below are those of the C locale's stand-in, whatever language the machine runs in.
    void initTestCase() { QLocale::setDefault(QLocale::c()); }

    void init()
    {
        m_root = TestSupport::caseFolder(m_dir);
        m_home = m_root + QStringLiteral("/Users/ann");
        TestSupport::makeFolder(m_home);
        TestSupport::useLayout(m_root, m_home);
    }

    // The short name before the shown one; a value that is not text counts as absent; without an
    // information list, the file name.
    void recordNameAndIdentifier()
    {
        const QString bundle = m_root + QStringLiteral("/File Name.app");
        writeBundle(bundle);
        const auto record = [&] {
            const InstalledApp app = InstalledApp::from(bundle).value();
            return std::tuple(app.name, app.bundleIdentifier, app.size - 100);
        };
        QCOMPARE(record(), std::tuple(QStringLiteral("File Name"), std::optional<QString>(), qint64(0)));
        for (const auto &[list, name, identifier] :
             {std::tuple(xmlDictionary("<key>CFBundleDisplayName</key><string>Shown</string><key>CFBundleName</key><string>Short</string>"
                                       "<key>CFBundleIdentifier</key><string>com.Example.F</string>"), QStringLiteral("Short"), std::optional(QStringLiteral("com.Example.F"))),
              {xmlDictionary("<key>CFBundleName</key><integer>42</integer><key>CFBundleDisplayName</key><true/><key>CFBundleIdentifier</key><integer>7</integer>"),
               QStringLiteral("File Name"), std::nullopt}}) {
            writeFile(bundle + QStringLiteral("/Contents/Info.plist"), list);
            QCOMPARE(record(), std::tuple(name, identifier, qint64(list.size())));
        }
    }

    void recordRefusals()
    {
        writeBundle(m_root + QStringLiteral("/Foo.APP"));
        QVERIFY(!InstalledApp::from(m_root + QStringLiteral("/Foo.APP")));
        QVERIFY(!InstalledApp::from(m_root + QStringLiteral("/Foo")));
        // A plain file named like a bundle is still a record: file name, nothing else.
        writeFile(m_root + QStringLiteral("/X.app"), "not a bundle");
        const auto plain = InstalledApp::from(QUrl::fromLocalFile(m_root + QStringLiteral("/X.app/")));
        QVERIFY(plain);
        QCOMPARE(std::tuple(plain->id, plain->name, plain->bundleIdentifier, plain->size),
                 std::tuple(m_root + QStringLiteral("/X.app"), QStringLiteral("X"), std::optional<QString>(), qint64(0)));
    }

    // Only visible bundles directly in each applications folder, by name without regard to case; equal
    // names keep discovery order, the system folder first.
    void discovery()
    {
        const QString system = m_root + QStringLiteral("/Applications");
        for (const char *entry : {"zeta.app", "Alpha.app", "Notes.app", "Utilities/Terminal.app", ".Hidden.app", "Loud.APP", "Folder"})
            writeBundle(system + QLatin1Char('/') + QLatin1String(entry));
        writeFile(system + QStringLiteral("/Plain.app"), "x");
        // No ~/Applications: the system folder alone, no error.
        QCOMPARE(names(), (QStringList{"Alpha", "Notes", "Plain", "zeta"}));
        writeBundle(m_home + QStringLiteral("/Applications/notes.app"));
        writeBundle(m_home + QStringLiteral("/Applications/beta.app"));
        QCOMPARE(names(), (QStringList{"Alpha", "beta", "Notes", "notes", "Plain", "zeta"}));
        QCOMPARE(AppDiscoveryService::discoverInstalledApps().at(2).id, system + QStringLiteral("/Notes.app"));
        // Without the system folder the home folder is still listed.
        QVERIFY(QDir().rename(system, m_root + QStringLiteral("/Elsewhere")));
        QCOMPARE(names(), (QStringList{"beta", "notes"}));
        // A home folder equal to the root makes both applications folders the same path strings.
        QVERIFY(QDir().rename(m_root + QStringLiteral("/Elsewhere"), system));
        TestSupport::useLayout(m_root, m_root + QLatin1Char('/'));
        QCOMPARE(names(), (QStringList{"Alpha", "Notes", "Plain", "zeta"}));
    }
};

QTEST_GUILESS_MAIN(AppDiscoveryTest)
#include "tst_appdiscovery.moc"
