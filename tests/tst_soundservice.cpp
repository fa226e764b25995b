// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include "services/SoundService.h"

#include <QElapsedTimer>
#include <QTest>

class SoundServiceTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    // Each system's Sounds folder, and the file that plays: names before extensions, and a folder or an
    // empty file does not count. A trailing "/" makes a folder, a leading "0" an empty file.
    void choosesTheFirstAvailableName()
    {
        const std::pair<QStringList, QString> cases[] = {{{"Hero.aiff", "Pop.wav", "Ping.aiff"}, "Pop.wav"},
                                                         {{"Pop.aiff", "Glass.caf"}, "Glass.caf"},
                                                         {{"Glass.aiff/", "0Pop.wav", "Ping.caf"}, "Ping.caf"},
                                                         {{"glass.aiff", "Pop.mp3", "Basso.aiff"}, QString()}};
        for (const auto &[files, expected] : cases) {
            const QString root = m_dir.filePath(expected.isEmpty() ? QStringLiteral("none") : expected);
            const QString sounds = root + QStringLiteral("/System/Library/Sounds/");
            for (const QString &file : files) {
                if (file.endsWith(QLatin1Char('/')))
                    TestSupport::makeFolder(sounds + file);
                else
                    TestSupport::writeFile(sounds + file.mid(file.startsWith(QLatin1Char('0'))), file.startsWith(QLatin1Char('0')) ? "" : "RIFF");
            }
            TestSupport::useLayout(root, root + QStringLiteral("/Users/ann"));
            QCOMPARE(SoundService::completionSoundFile().value_or(QString()), expected.isEmpty() ? QString() : sounds + expected);
            // Whether it plays or falls back to the beep, with or without an audio device, it returns at once.
            QElapsedTimer clock;
            clock.start();
            SoundService::playDeletionComplete();
            QVERIFY(clock.elapsed() < 1000);
        }
    }
};

QTEST_GUILESS_MAIN(SoundServiceTest)
#include "tst_soundservice.moc"
