// SPDX-License-Identifier: MIT
// Truncated, bit-flipped and random property lists fed to the reader, built with AddressSanitizer and
// UndefinedBehaviorSanitizer: any refusal is fine, any crash, overflow or undefined behaviour is not.
#include "PlistBytes.h"
#include "platform/PropertyList.h"

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

    void mutations()
    {
        QRandomGenerator random(0x6b657374);
        const QList<QByteArray> corpus = seeds();
        for (int round = 0; round < 40000; ++round) {
            QByteArray data = corpus.at(random.bounded(corpus.size()));
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

    void randomBytes()
    {
        QRandomGenerator random(20261123);
        for (int round = 0; round < 20000; ++round) {
            QByteArray data = QByteArrayList{"", "bplist00", "<?xml version=\"1.0\"?><plist><dict><key>"}.at(round % 3);
            for (int k = random.bounded(200); k > 0; --k)
                data.append(char(random.bounded(256)));
            (void)PropertyList::fromData(data);
        }
    }
};

QTEST_GUILESS_MAIN(PropertyListFuzz)
#include "fuzz_propertylist.moc"
