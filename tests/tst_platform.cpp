// SPDX-License-Identifier: MIT
#include "platform/ByteCountFormatter.h"
#include "platform/FileSystem.h"
#include "platform/NativePath.h"
#include "platform/TextCompare.h"

#include <QRandomGenerator>
#include <QTest>

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
        QTest::newRow("999,500 becomes MB") << qint64(999500) << "1 MB";
        QTest::newRow("2.05 GB keeps inner zero") << qint64(2050000000) << "2.05 GB";
        QTest::newRow("largest") << std::numeric_limits<qint64>::max() << "9.22 EB";
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
            // No NUL: file names cannot hold it. Bias towards bytes >= 0x80 to hit the escapes.
            for (char &c : bytes)
                c = char(random.bounded(2) ? random.bounded(0x80, 0x100) : random.bounded(1, 0x80));
            QCOMPARE(NativePath::encode(NativePath::decode(bytes)), bytes);
        }
    }

    void nativePathKeepsText_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("latin-1 byte") << QByteArray("Caf\xe9") << QStringView(u"Caf\xdce9").toString();
        QTest::newRow("encoded surrogate") << QByteArray("\xed\xa0\x80") << QStringView(u"\xdced\xdca0\xdc80").toString();
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
        QTest::addColumn<QStringList>("expected"); // last component, parent, extension, without extension, bare name
        QTest::newRow("trailing slash") << "/Applications/Foo.app/" << QStringList{"Foo.app", "/Applications", "app", "/Applications/Foo", "Foo"};
        QTest::newRow("two dots") << "/A/x.tar.gz" << QStringList{"x.tar.gz", "/A", "gz", "/A/x.tar", "x.tar"};
        QTest::newRow("hidden name") << "/A/.app" << QStringList{".app", "/A", "", "/A/.app", ".app"};
        QTest::newRow("dot in folder") << "/A.b/Foo" << QStringList{"Foo", "/A.b", "", "/A.b/Foo", "Foo"};
        QTest::newRow("top level") << "/Users" << QStringList{"Users", "/", "", "/Users", "Users"};
    }
    void pathHelpers()
    {
        QFETCH(QString, path);
        QFETCH(QStringList, expected);
        QCOMPARE((QStringList{FileSystem::lastPathComponent(path), FileSystem::deletingLastPathComponent(path),
                              FileSystem::pathExtension(path), FileSystem::deletingPathExtension(path),
                              FileSystem::fileNameWithoutExtension(path)}), expected);
    }

    void collation()
    {
        QStringList names{QStringLiteral("zeta"), QStringLiteral("Alpha"), QStringLiteral("beta"), QStringLiteral("Äpfel")};
        std::stable_sort(names.begin(), names.end(), TextCompare::localizedCaseInsensitiveLess);
        QCOMPARE(names, (QStringList{QStringLiteral("Alpha"), QStringLiteral("Äpfel"), QStringLiteral("beta"), QStringLiteral("zeta")}));
        QVERIFY(TextCompare::localizedCaseInsensitiveCompare(QStringLiteral("App 10"), QStringLiteral("App 9")) < 0);
    }
};

QTEST_GUILESS_MAIN(PlatformTest)
#include "tst_platform.moc"
