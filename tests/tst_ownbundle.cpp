// SPDX-License-Identifier: MIT
// The program's own information list and icon, as the build generates them: the version every build
// reports is the project's, and the identifier is one the removed-app scan never offers to remove.
#include "TestSupport.h"
#include "platform/PropertyList.h"
#include "services/OrphanRules.h"
#include "services/UpdateCheckService.h"

#include <QFile>
#include <QImageReader>
#include <QTest>

class OwnBundleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The compiled-in copy is the bundle's file, whose identifier the removed-app scan never offers.
    void informationList()
    {
        const auto generated = PropertyList::readDictionary(QStringLiteral(KESTRUNE_BINARY_DIR "/Info.plist"));
        QVERIFY(generated);
        QCOMPARE(UpdateCheckService::ownInformation(), generated);
        QCOMPARE(UpdateCheckService::currentVersion(), QStringLiteral(KESTRUNE_VERSION));
        QVERIFY(OrphanRules::isSystemArtifact(generated->value(QStringLiteral("CFBundleIdentifier")).toString(), QStringLiteral("Kestrune")));
    }

    // Written through Qt's ICNS plugin at build time; read back the way the window reads bundle icons.
    void bundleIcon()
    {
        const QString icns = QStringLiteral(KESTRUNE_BINARY_DIR "/src/ui/AppIcon.icns");
        if (!QFile::exists(icns))
            QSKIP("the window is not built");
        QImageReader reader(icns);
        QCOMPARE(reader.format(), QByteArray("icns"));
        const QImage image = reader.read();
        QCOMPARE(image.size(), QSize(1024, 1024));
        // A transparent corner and an opaque middle: the rounded tile, not a blank square.
        QCOMPARE(qAlpha(image.pixel(2, 2)), 0);
        QCOMPARE(qAlpha(image.pixel(512, 512)), 255);
    }
};

QTEST_GUILESS_MAIN(OwnBundleTest)
#include "tst_ownbundle.moc"
