// SPDX-License-Identifier: MIT
#include "platform/ByteCountFormatter.h"
#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"
#include "platform/NativePath.h"
#include "platform/TextCompare.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <limits>

class PlatformTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Orders below are those of the C locale's stand-in, whatever language the machine runs in.
    void initTestCase() { QLocale::setDefault(QLocale::c()); }

    void byteCount_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << qint64(0) << "Zero KB";
        QTest::newRow("one") << qint64(1) << "1 byte";
        QTest::newRow("999") << qint64(999) << "999 bytes";
        QTest::newRow("1000") << qint64(1000) << "1 KB";
        QTest::newRow("1499 rounds down") << qint64(1499) << "1 KB";
        QTest::newRow("1500 rounds up") << qint64(1500) << "2 KB";
        QTest::newRow("999,499 stays KB") << qint64(999499) << "999 KB";
        QTest::newRow("999,500 becomes MB") << qint64(999500) << "1 MB";
        QTest::newRow("1.45 MB half up") << qint64(1450000) << "1.5 MB";
        QTest::newRow("1.44 MB") << qint64(1449999) << "1.4 MB";
        QTest::newRow("999.95 MB becomes GB") << qint64(999950000) << "1 GB";
        QTest::newRow("2.3 GB trims zero") << qint64(2300000000) << "2.3 GB";
        QTest::newRow("2.05 GB keeps inner zero") << qint64(2050000000) << "2.05 GB";
        QTest::newRow("TB") << qint64(3456000000000) << "3.46 TB";
        QTest::newRow("largest") << std::numeric_limits<qint64>::max() << "9.22 EB";
        QTest::newRow("minus one") << qint64(-1) << "-1 byte";
        QTest::newRow("minus 1.5 MB") << qint64(-1500000) << "-1.5 MB";
        QTest::newRow("smallest") << std::numeric_limits<qint64>::min() << "-9.22 EB";
    }
    void byteCount()
    {
        QFETCH(qint64, bytes);
        QFETCH(QString, text);
        QCOMPARE(ByteCountFormatter::string(bytes), text);
    }

    void nativePathRoundTripsArbitraryBytes()
    {
        QRandomGenerator random(20261123);
        for (int round = 0; round < 2000; ++round) {
            QByteArray bytes(random.bounded(1, 40), Qt::Uninitialized);
            for (char &c : bytes) {
                // No NUL: file names cannot hold it. Bias towards bytes >= 0x80 to hit the escapes.
                c = char(random.bounded(2) ? random.bounded(0x80, 0x100) : random.bounded(1, 0x80));
            }
            QCOMPARE(NativePath::encode(NativePath::decode(bytes)), bytes);
        }
    }

    void nativePathKeepsText_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("ascii") << QByteArray("/Applications/Go.app") << QStringLiteral("/Applications/Go.app");
        QTest::newRow("accents") << QByteArray("Caf\xc3\xa9") << QStringLiteral("Café");
        QTest::newRow("astral") << QByteArray("\xf0\x9f\x98\x80.app") << QStringLiteral("😀.app");
        QTest::newRow("latin-1 byte") << QByteArray("Caf\xe9") << QStringView(u"Caf\xdce9").toString();
        QTest::newRow("encoded surrogate") << QByteArray("\xed\xa0\x80") << QStringView(u"\xdced\xdca0\xdc80").toString();
        QTest::newRow("overlong slash") << QByteArray("\xc0\xaf") << QStringView(u"\xdcc0\xdcaf").toString();
        QTest::newRow("truncated") << QByteArray("a\xe6\x97") << QStringView(u"a\xdce6\xdc97").toString();
        // A real character whose low surrogate lies in the escape range, then an escaped byte.
        QTest::newRow("pair then escape") << QByteArray("\xf0\x90\x82\x80\x80") << QStringView(u"\xd800\xdc80\xdc80").toString();
    }
    void nativePathKeepsText()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(NativePath::decode(bytes), text);
        QCOMPARE(NativePath::encode(text), bytes);
    }

    void pathHelpers_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("last");
        QTest::addColumn<QString>("parent");
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QString>("withoutExtension");
        QTest::newRow("bundle") << "/Applications/Foo Bar.app" << "Foo Bar.app" << "/Applications" << "app" << "/Applications/Foo Bar";
        QTest::newRow("trailing slash") << "/Applications/Foo.app/" << "Foo.app" << "/Applications" << "app" << "/Applications/Foo";
        QTest::newRow("upper case kept") << "/A/Foo.APP" << "Foo.APP" << "/A" << "APP" << "/A/Foo";
        QTest::newRow("two dots") << "/A/x.tar.gz" << "x.tar.gz" << "/A" << "gz" << "/A/x.tar";
        QTest::newRow("hidden name") << "/A/.app" << ".app" << "/A" << "" << "/A/.app";
        QTest::newRow("trailing dot") << "/A/Foo." << "Foo." << "/A" << "" << "/A/Foo.";
        QTest::newRow("dot in folder") << "/A.b/Foo" << "Foo" << "/A.b" << "" << "/A.b/Foo";
        QTest::newRow("root") << "/" << "/" << "/" << "" << "/";
        QTest::newRow("top level") << "/Users" << "Users" << "/" << "" << "/Users";
        QTest::newRow("relative") << "Foo.app" << "Foo.app" << "" << "app" << "Foo";
    }
    void pathHelpers()
    {
        QFETCH(QString, path);
        QFETCH(QString, last);
        QFETCH(QString, parent);
        QFETCH(QString, extension);
        QFETCH(QString, withoutExtension);
        QCOMPARE(FileSystem::lastPathComponent(path), last);
        if (path != QLatin1String("/"))
            QCOMPARE(FileSystem::deletingLastPathComponent(path), parent);
        QCOMPARE(FileSystem::pathExtension(path), extension);
        QCOMPARE(FileSystem::deletingPathExtension(path), withoutExtension);
    }

    void packageExtensions_data()
    {
        QTest::addColumn<QString>("extension");
        QTest::addColumn<bool>("package");
        for (const char *name : {"app", "appex", "bundle", "component", "kext", "mdimporter", "plugin", "prefPane",
                                 "qlgenerator", "saver", "xpc", "APP", "PrefPane", "PREFPANE"})
            QTest::newRow(name) << QString::fromLatin1(name) << true;
        for (const char *name : {"", "framework", "ap", "apps", "plist", "lproj"})
            QTest::newRow(*name ? name : "empty") << QString::fromLatin1(name) << false;
    }
    void packageExtensions()
    {
        QFETCH(QString, extension);
        QFETCH(bool, package);
        QCOMPARE(FileSystem::isPackageExtension(QStringView(extension)), package);
        const QByteArray latin = extension.toLatin1();
        QCOMPARE(FileSystem::isPackageExtension(QLatin1StringView(latin)), package);
    }

    void standardizedPath()
    {
        QCOMPARE(FileSystem::standardizedPath(QStringLiteral("/Applications//Foo.app/")), QStringLiteral("/Applications/Foo.app"));
        QCOMPARE(FileSystem::standardizedPath(QStringLiteral("/a/./b/../c")), QStringLiteral("/a/c"));
        QVERIFY(FileSystem::standardizedPath(QStringLiteral("rel")).startsWith(QLatin1Char('/')));
    }

    void layoutPrefixes()
    {
        FileSystemLayout::setRoot(QStringLiteral("/"));
        QCOMPARE(FileSystemLayout::rootPrefix(), QString());
        QCOMPARE(FileSystemLayout::systemPath(QStringLiteral("/Library")), QStringLiteral("/Library"));
        FileSystemLayout::setRoot(QStringLiteral("/tmp/mac/"));
        QCOMPARE(FileSystemLayout::systemPath(QStringLiteral("/Applications")), QStringLiteral("/tmp/mac/Applications"));
        FileSystemLayout::setHome(QStringLiteral("/tmp/mac/Users/ann//"));
        QCOMPARE(FileSystemLayout::homePath(QStringLiteral("/Applications")), QStringLiteral("/tmp/mac/Users/ann/Applications"));
    }

    void collation()
    {
        QStringList names{QStringLiteral("zeta"), QStringLiteral("Alpha"), QStringLiteral("beta"), QStringLiteral("Äpfel")};
        std::stable_sort(names.begin(), names.end(), TextCompare::localizedCaseInsensitiveLess);
        QCOMPARE(names, (QStringList{QStringLiteral("Alpha"), QStringLiteral("Äpfel"), QStringLiteral("beta"), QStringLiteral("zeta")}));
        QCOMPARE(TextCompare::localizedCaseInsensitiveCompare(QStringLiteral("Notes"), QStringLiteral("notes")), 0);
        QVERIFY(TextCompare::localizedCaseInsensitiveCompare(QStringLiteral("App 10"), QStringLiteral("App 9")) < 0);
        QVERIFY(TextCompare::localizedCaseInsensitiveCompare(QStringLiteral("Cafe"), QStringLiteral("Café")) != 0);
    }
};

QTEST_GUILESS_MAIN(PlatformTest)
#include "tst_platform.moc"
