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
    // The kinds the program reads; the others only have to be survived, which the fuzz test checks.
    void values()
    {
        const auto xml = PropertyList::fromData(xmlDictionary("<key>CFBundleName</key><string>Caf\xc3\xa9</string><key>Count</key><integer>42</integer>"
                                                              "<key>On</key><true/><key>List</key><array><string>a</string><dict/></array>"));
        QVERIFY(xml);
        QCOMPARE(xml->toMap(), (QVariantMap{{QStringLiteral("CFBundleName"), QStringLiteral("Café")}, {QStringLiteral("Count"), qint64(42)},
                                            {QStringLiteral("On"), true}, {QStringLiteral("List"), QVariantList{QStringLiteral("a"), QVariantMap()}}}));
        const auto binaryList = PropertyList::fromData(binary({Dictionary{{1}, {2}}, String{"CFBundleName"}, String{"Brightline"}}));
        QVERIFY(binaryList);
        QCOMPARE(binaryList->toMap(), (QVariantMap{{QStringLiteral("CFBundleName"), QStringLiteral("Brightline")}}));
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
        QTest::newRow("binary dictionary cycle") << binary({Dictionary{{1}, {0}}, String{"k"}});
        QTest::newRow("binary reference past end") << binary({Array{{7}}, String{"x"}});
        QTest::newRow("binary top past end") << binary({String{"x"}}, 3);
        const QByteArray good = binary({Array{{1}}, String{"x"}});
        // The second offset-table entry (just before the 32-byte trailer) points past the table; an
        // object count of about 2^62.
        QTest::newRow("binary offset past table") << QByteArray(good).replace(good.size() - 32 - 2, 1, "\x7F");
        QTest::newRow("binary absurd object count") << QByteArray(good).replace(good.size() - 32 + 8, 1, "\x7F");
        QTest::newRow("binary truncated") << good.left(good.size() - 5);
        // libplist would abort the program on these rather than refuse them.
        QTest::newRow("binary key with NUL") << binary({Dictionary{{1}, {2}}, String{QByteArray("CFBundle\0Name", 13)}, String{"v"}});
        QTest::newRow("xml raw NUL") << xmlDictionary(QByteArray("<key>a\0b</key><string>v</string>", 32));
        QTest::newRow("xml hex NUL reference") << xmlDictionary("<key>a&#x0000;</key><string>v</string>");
        QTest::newRow("over 16 MiB") << QByteArray(PropertyList::maximumBytes + 1, ' ');
    }
    void refused()
    {
        QFETCH(QByteArray, data);
        QVERIFY(!PropertyList::fromData(data));
    }

    // The depth limit is inclusive; shared subtrees are not cycles; containers inside comments and CDATA
    // do not count; character references other than NUL are ordinary text.
    void accepted()
    {
        QByteArray commented = nestedXmlArrays(PropertyList::maximumDepth);
        commented.replace("<string>leaf</string>", "<!-- <array><array> --><string><![CDATA[<array>]]></string>");
        for (const QByteArray &data : {nestedBinaryArrays(PropertyList::maximumDepth), binary({Array{{1, 1}}, String{"twice"}}), commented})
            QVERIFY(PropertyList::fromData(data));
        QCOMPARE(PropertyList::fromData(xmlDictionary("<key>k</key><string>&#10;&#x41;&#0065;</string>"))->toMap(), (QVariantMap{{QStringLiteral("k"), QStringLiteral("\nAA")}}));
    }

    // Only a dictionary is one; exactly the size limit is read, one byte more is not (trailing
    // whitespace keeps it valid XML).
    void readDictionaryFromFiles()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("Info.plist"));
        TestSupport::writeFile(path, nestedXmlArrays(1));
        QVERIFY(PropertyList::read(path) && !PropertyList::readDictionary(path));
        QVERIFY(!PropertyList::readDictionary(folder.filePath(QStringLiteral("missing.plist"))));
        QVERIFY(!PropertyList::readDictionary(folder.path()));
        QByteArray atLimit = xmlDictionary("<key>A</key><string>b</string>");
        atLimit.append(QByteArray(PropertyList::maximumBytes - atLimit.size(), '\n'));
        TestSupport::writeFile(path, atLimit);
        QCOMPARE(PropertyList::readDictionary(path)->value(QStringLiteral("A")).toString(), QStringLiteral("b"));
        TestSupport::writeFile(path, atLimit + '\n');
        QVERIFY(!PropertyList::readDictionary(path));
    }
};

QTEST_GUILESS_MAIN(PropertyListTest)
#include "tst_propertylist.moc"
