// SPDX-License-Identifier: MIT
// Truncated, bit-flipped, structurally mutated and random property lists fed to the reader, built with
// AddressSanitizer and UndefinedBehaviorSanitizer: any refusal is fine, any crash, overflow, undefined
// behaviour, hang or runaway time is not.
#include "PlistBytes.h"
#include "platform/PropertyList.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTest>

using namespace PlistBytes;

static QList<QByteArray> seeds()
{
    return {
        xmlDictionary("<key>CFBundleName</key><string>Caf\xc3\xa9</string><key>CFBundleIdentifier</key><string>com.x</string>"
                      "<key>N</key><integer>-12</integer><key>R</key><real>1.5</real><key>D</key><data>AAECAw==</data>"
                      "<key>T</key><date>2020-01-01T00:00:00Z</date><key>B</key><false/>"
                      "<key>A</key><array><dict><key>k</key><string>v</string></dict><array/></array>"),
        nestedXmlArrays(PropertyList::maximumDepth),
        binary({Array{{1, 2, 1}}, Dictionary{{3}, {2}}, String{"leaf"}, String{"key"}}),
        nestedBinaryArrays(PropertyList::maximumDepth),
        // Twenty references to one string: a count that needs the extended length form.
        binary({Array{QList<quint64>(20, 1)}, String{"shared"}}),
        // A UTF-16 value, long enough for the extended count too.
        binary({Dictionary{{1}, {2}}, String{"CFBundleName"}, String{QByteArray(40, 'a'), true}}),
    };
}

class PropertyListFuzz : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The seeds themselves must be read, or the mutations start from refusals.
    void everyTruncation()
    {
        for (const QByteArray &seed : seeds()) {
            QVERIFY(PropertyList::fromData(seed));
            for (qsizetype length = 0; length < seed.size(); ++length)
                (void)PropertyList::fromData(seed.left(length));
        }
    }

    // Seeds with a few random edits, and random bytes behind each kind's opening.
    void mutations()
    {
        QRandomGenerator random(0x6b657374);
        const QList<QByteArray> corpus = seeds();
        for (int round = 0; round < 60000; ++round) {
            QByteArray data = corpus.at(random.bounded(corpus.size()));
            if (round % 3 == 0) {
                data = QByteArrayList{"", "bplist00", "<?xml version=\"1.0\"?><plist><dict><key>"}.at(round / 3 % 3);
                for (int k = random.bounded(200); k > 0; --k)
                    data.append(char(random.bounded(256)));
            }
            for (int edits = random.bounded(1, 6); edits > 0 && !data.isEmpty(); --edits) {
                const qsizetype at = random.bounded(data.size());
                switch (random.bounded(5)) {
                case 0: data[at] = char(random.bounded(256)); break;
                case 1: data[at] = char(data[at] ^ (1 << random.bounded(8))); break;
                case 2: data.remove(at, random.bounded(1, 8)); break;
                case 3: data.insert(at, char(random.bounded(256))); break;
                // The trailer and the object markers are where binary lists go wrong.
                default: data[std::max<qsizetype>(0, data.size() - 1 - random.bounded(std::min<qsizetype>(40, data.size())))] = char(random.bounded(256)); break;
                }
            }
            (void)PropertyList::fromData(data);
        }
    }

    // The structures that broke the reader before: quotes and '>' inside tags and instructions, arrays
    // sharing references. Each read must end soon, refused or not.
    void structuralMutations()
    {
        QRandomGenerator random(0x71756f74);
        const QByteArrayList inserts{" a=\"/>\"", " a=\">\"", " a=\"<\"", "\"", "/", "<?x \"?>\"?>", "<!-- > -->",
                                     "<![CDATA[</array>]]>", "<array a=\"/>\">", "</array>", "<dict>", "</dict>"};
        QElapsedTimer slowest;
        qint64 longest = 0;
        for (int round = 0; round < 3000; ++round) {
            QByteArray data = round % 2 ? seeds().constFirst() : nestedXmlArrays(random.bounded(1, 80));
            for (int edits = random.bounded(1, 12); edits > 0; --edits) {
                // Right after a tag's name, or anywhere.
                qsizetype at = random.bounded(data.size());
                if (random.bounded(2)) {
                    const qsizetype open = data.indexOf('<', at);
                    const qsizetype nameEnd = open < 0 ? -1 : data.indexOf('>', open);
                    at = nameEnd < 0 ? at : nameEnd;
                }
                const QByteArray &insert = inserts.at(random.bounded(inserts.size()));
                data.insert(at, insert.repeated(random.bounded(1, 3) == 1 ? 1 : random.bounded(1, 200)));
            }
            slowest.start();
            (void)PropertyList::fromData(data);
            longest = std::max(longest, slowest.elapsed());
        }
        for (int round = 0; round < 400; ++round) {
            // A random chain of arrays, each referring to later objects, often the same one many times.
            const int count = random.bounded(2, 70);
            QList<Object> objects;
            for (int k = 0; k + 1 < count; ++k) {
                QList<quint64> references;
                for (int r = random.bounded(1, 5); r > 0; --r)
                    references.append(quint64(random.bounded(k + 1, count)));
                objects.append(Array{references});
            }
            slowest.start();
            (void)PropertyList::fromData(binary(objects << String{"leaf"}));
            longest = std::max(longest, slowest.elapsed());
        }
        QVERIFY2(longest < 5000, qPrintable(QStringLiteral("one read took %1 ms").arg(longest)));
    }

};

QTEST_GUILESS_MAIN(PropertyListFuzz)
#include "fuzz_propertylist.moc"
