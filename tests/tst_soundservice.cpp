// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include "services/SoundService.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

class SoundServiceTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    void choosesTheFirstAvailableName_data()
    {
        QTest::addColumn<QStringList>("files"); // a trailing "/" makes a folder, a leading "0" an empty file
        QTest::addColumn<QString>("expected");
        QTest::newRow("all four") << QStringList{"Hero.aiff", "Ping.aiff", "Pop.aiff", "Glass.aiff"} << "Glass.aiff";
        QTest::newRow("no Glass") << QStringList{"Hero.aiff", "Pop.wav", "Ping.aiff"} << "Pop.wav";
        QTest::newRow("name order beats extension order") << QStringList{"Pop.aiff", "Glass.caf"} << "Glass.caf";
        QTest::newRow("folder and empty file skipped") << QStringList{"Glass.aiff/", "0Pop.wav", "Ping.caf"} << "Ping.caf";
        QTest::newRow("none: case and format matter") << QStringList{"glass.aiff", "Pop.mp3", "Basso.aiff"} << QString();
    }

    void choosesTheFirstAvailableName()
    {
        QFETCH(QStringList, files);
        QFETCH(QString, expected);
        const QString root = TestSupport::caseFolder(m_dir);
        const QString sounds = root + QStringLiteral("/System/Library/Sounds/");
        for (const QString &file : files) {
            if (file.endsWith(QLatin1Char('/')))
                TestSupport::makeFolder(sounds + file);
            else if (file.startsWith(QLatin1Char('0')))
                TestSupport::writeFile(sounds + file.mid(1));
            else
                TestSupport::writeFile(sounds + file, "RIFF");
        }
        TestSupport::useLayout(root, root + QStringLiteral("/Users/ann"));
        QCOMPARE(SoundService::completionSoundFile().value_or(QString()), expected.isEmpty() ? QString() : sounds + expected);
        // Whether it plays or falls back to the beep, with or without an audio device, it returns at once.
        QElapsedTimer clock;
        clock.start();
        SoundService::playDeletionComplete();
        QVERIFY(clock.elapsed() < 1000);
    }
};

QTEST_GUILESS_MAIN(SoundServiceTest)
#include "tst_soundservice.moc"
