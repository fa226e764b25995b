// SPDX-License-Identifier: MIT
#include "PlistBytes.h"
#include "TestSupport.h"
#include "platform/PropertyList.h"

#include <QElapsedTimer>
#include <QFile>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

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
        const QString name = QStringLiteral("Brightline Café Notes"); // past 14 characters and beyond ASCII: UTF-16
        const auto binaryList = PropertyList::fromData(binary({Dictionary{{1}, {2}}, String{"CFBundleName"}, String{QStringEncoder(QStringEncoder::Utf16BE)(name), true}}));
        QCOMPARE(binaryList.value_or(QVariant()).toMap(), (QVariantMap{{QStringLiteral("CFBundleName"), name}}));
    }

    // Everything the reader must refuse without crashing; a refusal is simply "no value".
    void refused_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::newRow("not a plist") << QByteArray("hello world");
        QTest::newRow("xml nested 65") << nestedXmlArrays(65);
        QTest::newRow("binary nested 65") << nestedBinaryArrays(65);
        QTest::newRow("binary dictionary cycle") << binary({Dictionary{{1}, {0}}, String{"k"}});
        QTest::newRow("binary reference past end") << binary({Array{{7}}, String{"x"}});
        const QByteArray good = binary({Array{{1}}, String{"x"}});
        // The second offset-table entry (just before the 32-byte trailer) points past the table; ~2^62 objects.
        QTest::newRow("binary offset past table") << QByteArray(good).replace(good.size() - 32 - 2, 1, "\x7F");
        QTest::newRow("binary absurd object count") << QByteArray(good).replace(good.size() - 32 + 8, 1, "\x7F");
        // libplist would abort the program on these rather than refuse them.
        QTest::newRow("binary key with NUL") << binary({Dictionary{{1}, {2}}, String{QByteArray("CFBundle\0Name", 13)}, String{"v"}});
        QTest::newRow("binary UTF-16 key with NUL") << binary({Dictionary{{1}, {2}}, String{QByteArray("\0C\0\0\0x", 6), true}, String{"v"}});
        QTest::newRow("xml raw NUL") << xmlDictionary(QByteArray("<key>a\0b</key><string>v</string>", 32));
        QTest::newRow("xml hex NUL reference") << xmlDictionary("<key>a&#x0000;</key><string>v</string>");
        QTest::newRow("over 16 MiB") << QByteArray(PropertyList::maximumBytes + 1, ' ');
        // libplist takes a '>' inside quotes as part of the tag, so each of these opens an array.
        QTest::newRow("xml quoted '/>' 65") << nestedXmlArrays(65).replace("<array>", "<array a=\"/>\">");
        QTest::newRow("xml closing tags in a quoted instruction")
            << nestedXmlArrays(60).replace("<string>leaf</string>", "<? \"?>" + QByteArray("</array>").repeated(10) + "\" ?>"
                                                                        + QByteArray("<array>").repeated(10) + "<string>leaf</string>"
                                                                        + QByteArray("</array>").repeated(10));
        QTest::newRow("xml keys over the limit") << xmlManyKeys(int(PropertyList::maximumDictionaryKeys) + 1);
        QTest::newRow("binary shared references 2^21") << nestedBinaryArrays(21, 2);
        QList<Object> twoWays{Array{{1, 41}}}; // a subtree 39 arrays deep, and a way to it through 30 more
        for (quint64 k = 1; k <= 70; ++k)
            twoWays << (k == 40 ? Object(String{"leaf"}) : Object(Array{{k == 70 ? 1 : k + 1}}));
        QTest::newRow("binary shared subtree deeper by its second way") << binary(twoWays);
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
        QByteArray quoted = nestedXmlArrays(PropertyList::maximumDepth).replace("<array>", "<array a=\"/>\" b=\"<x>\">");
        quoted.replace("<string>leaf</string>", "<?pi \"<array>\"?><array a=\">\"/><dict/><dict  /><string>leaf</string>");
        for (const QByteArray &data : {nestedBinaryArrays(PropertyList::maximumDepth), binary({Array{{1, 1}}, String{"twice"}}), commented,
                                       quoted, nestedBinaryArrays(19, 2), xmlManyKeys(int(PropertyList::maximumDictionaryKeys))})
            QVERIFY(PropertyList::fromData(data));
        QCOMPARE(PropertyList::fromData(xmlDictionary("<key>k</key><string>&#10;&#x41;&#0065;</string>"))->toMap(), (QVariantMap{{QStringLiteral("k"), QStringLiteral("\nAA")}}));
    }

    // Only a regular file (or a link to one) holding a dictionary is one; exactly the size limit is read,
    // one byte more is not (trailing whitespace keeps it valid XML). A pipe or a device named like a list
    // is never opened for a blocking read: one with no writer would stall the scan for good.
    void files()
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
        TestSupport::makeSymlink(path, path + QStringLiteral("-link"));
        QCOMPARE(PropertyList::readDictionary(path + QStringLiteral("-link"))->value(QStringLiteral("A")).toString(), QStringLiteral("b"));
        TestSupport::writeFile(path, atLimit + '\n');
        QVERIFY(!PropertyList::readDictionary(path));

        const QString fifo = folder.filePath(QStringLiteral("com.example.agent.plist"));
        QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0644), 0);
        TestSupport::makeSymlink(fifo, fifo + QStringLiteral("-link"));
        QElapsedTimer timer;
        timer.start();
        for (const QString &special : {fifo, fifo + QStringLiteral("-link"), QStringLiteral("/dev/zero")})
            QVERIFY2(!PropertyList::read(special), qPrintable(special));
        QVERIFY(timer.elapsed() < 5000);
    }
};

QTEST_GUILESS_MAIN(PropertyListTest)
#include "tst_propertylist.moc"
