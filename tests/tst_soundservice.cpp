// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include "services/SoundService.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

class SoundServiceTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private Q_SLOTS:
    void choosesTheFirstAvailableName_data()
    {
        QTest::addColumn<QStringList>("files"); // a trailing "/" makes a folder, a leading "0" an empty file
        QTest::addColumn<QString>("expected");
        QTest::newRow("all four") << QStringList{"Hero.aiff", "Ping.aiff", "Pop.aiff", "Glass.aiff"} << "Glass.aiff";
        QTest::newRow("no Glass") << QStringList{"Hero.aiff", "Pop.wav", "Ping.aiff"} << "Pop.wav";
        QTest::newRow("name order beats extension order") << QStringList{"Pop.aiff", "Glass.caf"} << "Glass.caf";
        QTest::newRow("extension order within a name") << QStringList{"Glass.caf", "Glass.wav"} << "Glass.wav";
        QTest::newRow("letter case matters") << QStringList{"glass.aiff", "Ping.wav"} << "Ping.wav";
        QTest::newRow("other formats ignored") << QStringList{"Glass.mp3", "Glass.aif", "Hero.wav"} << "Hero.wav";
        QTest::newRow("folder and empty file skipped") << QStringList{"Glass.aiff/", "0Pop.wav", "Ping.caf"} << "Ping.caf";
        QTest::newRow("none") << QStringList{"Basso.aiff"} << QString();
        QTest::newRow("no Sounds folder") << QStringList{} << QString();
    }

    void choosesTheFirstAvailableName()
    {
        QFETCH(QStringList, files);
        QFETCH(QString, expected);
        const QString root = m_dir.path() + QLatin1Char('/') + QString::fromLatin1(QTest::currentDataTag());
        const QString sounds = root + QStringLiteral("/System/Library/Sounds/");
        for (QString file : files) {
            if (file.endsWith(QLatin1Char('/')))
                TestSupport::makeFolder(sounds + file);
            else if (file.startsWith(QLatin1Char('0')))
                TestSupport::writeFile(sounds + file.mid(1));
            else
                TestSupport::writeFile(sounds + file, "RIFF");
        }
        TestSupport::useLayout(root, root + QStringLiteral("/Users/ann"));
        const std::optional<QString> chosen = SoundService::completionSoundFile();
        QCOMPARE(chosen.value_or(QString()), expected.isEmpty() ? QString() : sounds + expected);
    }

    // The sample Mac's sounds must be real WAV files that a player can load, and Glass must win.
    void sampleMacShipsPlayableSounds()
    {
        const QString root = m_dir.path() + QStringLiteral("/sample");
        QString log;
        if (!TestSupport::generateSampleMac(root, 1, QStringLiteral("small"), &log))
            QSKIP(qPrintable(QStringLiteral("the sample-Mac generator failed: ") + log));
        TestSupport::useLayout(root, TestSupport::sampleHome(root));
        QCOMPARE(SoundService::completionSoundFile().value_or(QString()), root + QStringLiteral("/System/Library/Sounds/Glass.wav"));
        for (const char *name : SoundService::soundNames) {
            QFile file(root + QStringLiteral("/System/Library/Sounds/%1.wav").arg(QLatin1String(name)));
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray wav = file.readAll();
            QVERIFY(wav.startsWith("RIFF") && wav.mid(8, 8) == "WAVEfmt ");
            QCOMPARE(qFromLittleEndian<quint32>(wav.constData() + 4), quint32(wav.size() - 8));
            QVERIFY2(wav.size() > 1000 && wav.size() < 64 * 1024, "a short tone, not silence and not a large file");
        }

        // With or without an audio device it must return at once.
        QElapsedTimer clock;
        clock.start();
        SoundService::playDeletionComplete();
        QVERIFY(clock.elapsed() < 1000);
        QTest::qWait(50);
    }
};

QTEST_GUILESS_MAIN(SoundServiceTest)

#include "tst_soundservice.moc"
