// SPDX-License-Identifier: MIT
#include "PlistBytes.h"
#include "TestSupport.h"
#include "platform/PropertyList.h"

#include <QTemporaryDir>
#include <QTest>

using namespace PlistBytes;

class PropertyListTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void xmlValues()
    {
        // The kinds the program reads; the others only have to be survived, which the fuzz test checks.
        const QByteArray xml = xmlDictionary(
            "<key>CFBundleName</key><string>Caf\xc3\xa9</string><key>Count</key><integer>42</integer>"
            "<key>On</key><true/><key>List</key><array><string>a</string><dict/></array>");
        const auto value = PropertyList::fromData(xml);
        QVERIFY(value);
        const QVariantMap map = value->toMap();
        QCOMPARE(map.value(QStringLiteral("CFBundleName")), QVariant(QStringLiteral("Café")));
        QCOMPARE(map.value(QStringLiteral("Count")).typeId(), QMetaType::LongLong);
        QCOMPARE(map.value(QStringLiteral("Count")).toLongLong(), 42);
        QCOMPARE(map.value(QStringLiteral("On")), QVariant(true));
        const QVariantList list = map.value(QStringLiteral("List")).toList();
        QCOMPARE(list.size(), 2);
        QCOMPARE(list.at(1).typeId(), QMetaType::QVariantMap);
    }

    void binaryDictionary()
    {
        const QByteArray data = binary({Dictionary{{1, 2}, {3, 4}}, String{"CFBundleName"}, String{"CFBundleIdentifier"},
                                        String{"Brightline"}, String{"io.brightline.Brightline"}});
        const auto value = PropertyList::fromData(data);
        QVERIFY(value);
        const QVariantMap map = value->toMap();
        QCOMPARE(map.value(QStringLiteral("CFBundleName")).toString(), QStringLiteral("Brightline"));
        QCOMPARE(map.value(QStringLiteral("CFBundleIdentifier")).toString(), QStringLiteral("io.brightline.Brightline"));
    }

    // Everything the reader must refuse without crashing; a refusal is simply "no value".
    void refused_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("not a plist") << QByteArray("hello world");
        QTest::newRow("unterminated xml") << QByteArray("<?xml version=\"1.0\"?><plist><dict><key>CFBundleName</key>");
        QTest::newRow("xml nested 65") << nestedXmlArrays(65);
        QTest::newRow("xml nested 10000") << nestedXmlArrays(10000);
        QTest::newRow("binary nested 65") << nestedBinaryArrays(65);
        QTest::newRow("binary nested 5000") << nestedBinaryArrays(5000);
        QTest::newRow("binary self cycle") << binary({Array{{0}}});
        QTest::newRow("binary long cycle") << binary({Array{{1}}, Array{{2}}, Array{{0}}});
        QTest::newRow("binary dictionary cycle") << binary({Dictionary{{1}, {0}}, String{"k"}});
        QTest::newRow("binary reference past end") << binary({Array{{7}}, String{"x"}});
        QTest::newRow("binary top past end") << binary({String{"x"}}, 3);
        QByteArray badOffset = binary({Array{{1}}, String{"x"}});
        // The second offset-table entry (just before the 32-byte trailer) points past the table.
        badOffset[badOffset.size() - 32 - 2] = char(0x7F);
        QTest::newRow("binary offset past table") << badOffset;
        QByteArray hugeCount = binary({Array{{1}}, String{"x"}});
        hugeCount[hugeCount.size() - 32 + 8] = char(0x7F); // object count ~ 2^62
        QTest::newRow("binary absurd object count") << hugeCount;
        const QByteArray good = binary({Dictionary{{1}, {2}}, String{"k"}, String{"v"}});
        QTest::newRow("binary truncated") << good.left(good.size() - 5);
        // libplist would abort the program on these rather than refuse them.
        QTest::newRow("binary key with NUL") << binary({Dictionary{{1}, {2}}, String{QByteArray("CFBundle\0Name", 13)}, String{"v"}});
        QTest::newRow("binary value with NUL") << binary({Dictionary{{1}, {2}}, String{"k"}, String{QByteArray("a\0b", 3)}});
        QTest::newRow("xml raw NUL") << xmlDictionary(QByteArray("<key>a\0b</key><string>v</string>", 32));
        QTest::newRow("xml decimal NUL reference") << xmlDictionary("<key>k</key><string>a&#0;b</string>");
        QTest::newRow("xml hex NUL reference") << xmlDictionary("<key>a&#x0000;</key><string>v</string>");
        QTest::newRow("over 16 MiB") << QByteArray(PropertyList::maximumBytes + 1, ' ');
    }
    void refused()
    {
        QFETCH(QByteArray, data);
        QVERIFY(!PropertyList::fromData(data));
    }

    void depthLimitIsInclusive()
    {
        QVERIFY(PropertyList::fromData(nestedXmlArrays(PropertyList::maximumDepth)));
        QVERIFY(PropertyList::fromData(nestedBinaryArrays(PropertyList::maximumDepth)));
        // Shared subtrees are not cycles: the same string referred to twice is fine.
        QVERIFY(PropertyList::fromData(binary({Array{{1, 1}}, String{"twice"}})));
        // Containers inside comments and CDATA do not count towards the depth.
        QByteArray commented = nestedXmlArrays(PropertyList::maximumDepth);
        commented.replace("<string>leaf</string>", "<!-- <array><array> --><string><![CDATA[<array>]]></string>");
        QVERIFY(PropertyList::fromData(commented));
        // Character references other than NUL are ordinary text.
        QCOMPARE(PropertyList::fromData(xmlDictionary("<key>k</key><string>&#10;&#x41;&#0065;</string>"))->toMap().value(QStringLiteral("k")).toString(),
                 QStringLiteral("\nAA"));
    }

    void readDictionaryFromFiles()
    {
        QTemporaryDir folder;
        QVERIFY(folder.isValid());
        const QString dictionary = folder.filePath(QStringLiteral("Info.plist"));
        TestSupport::writeFile(dictionary, xmlDictionary("<key>CFBundleName</key><string>Go</string>"));
        QCOMPARE(PropertyList::readDictionary(dictionary)->value(QStringLiteral("CFBundleName")).toString(), QStringLiteral("Go"));

        const QString array = folder.filePath(QStringLiteral("array.plist"));
        TestSupport::writeFile(array, nestedXmlArrays(1));
        QVERIFY(PropertyList::read(array));
        QVERIFY(!PropertyList::readDictionary(array));

        QVERIFY(!PropertyList::readDictionary(folder.filePath(QStringLiteral("missing.plist"))));
        QVERIFY(!PropertyList::readDictionary(folder.path())); // a folder is not a file

        // Exactly the size limit is read; one byte more is not (trailing whitespace keeps it valid XML).
        QByteArray atLimit = xmlDictionary("<key>A</key><string>b</string>");
        atLimit.append(QByteArray(PropertyList::maximumBytes - atLimit.size(), '\n'));
        const QString big = folder.filePath(QStringLiteral("big.plist"));
        TestSupport::writeFile(big, atLimit);
        QVERIFY(PropertyList::readDictionary(big));
        TestSupport::writeFile(big, atLimit + '\n');
        QVERIFY(!PropertyList::readDictionary(big));
    }
};

QTEST_GUILESS_MAIN(PropertyListTest)
#include "tst_propertylist.moc"
