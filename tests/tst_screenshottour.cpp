// SPDX-License-Identifier: MIT
// The screenshot tool run as the README runs it, on a sample Mac: it must walk every view to its end
// under either desktop scheme, so a view that stops answering the state object shows up here.
#include "TestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace TestSupport;

class ScreenshotTourTest : public QObject {
    Q_OBJECT

    const QString m_tool = QStringLiteral(KESTRUNE_BINARY_DIR "/tools/screenshot_tour/kestrune-screenshots");
    const QString m_darkDesktop = QStringLiteral(KESTRUNE_BINARY_DIR "/tests/dark-desktop");
    QTemporaryDir m_dir;
    QString m_root;

private Q_SLOTS:
    void initTestCase()
    {
        if (!QFileInfo(m_tool).isExecutable())
            QSKIP("the window is not built");
        QVERIFY(m_dir.isValid());
        // The sample holds read-only folders that only the sweep at exit can remove.
        m_dir.setAutoRemove(false);
        sweepOnExit(m_dir.path());
        m_root = m_dir.filePath(QStringLiteral("mac"));
        QString log;
        QVERIFY2(generateSampleMac(m_root, 1, QStringLiteral("small"), &log), qPrintable(log));
    }

    void writesEveryPicture_data()
    {
        QTest::addColumn<bool>("dark");
        QTest::newRow("platform palette") << false;
        QTest::newRow("dark desktop") << true;
    }
    void writesEveryPicture()
    {
        QFETCH(bool, dark);
        if (dark && !QFileInfo::exists(m_darkDesktop))
            QSKIP("qt6ct is not installed");
        const QString folder = caseFolder(m_dir);
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        if (dark) {
            env.insert(QStringLiteral("QT_QPA_PLATFORMTHEME"), QStringLiteral("qt6ct"));
            env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_darkDesktop);
        }
        // Under the sanitizers Qt 6.4's software scene graph leaves an icon's texture behind at exit
        // (a cycle of QSGTexture, QPixmap and QImage data, all inside Qt): the tour is a developer's
        // tool, so its leaks are not checked; everything else about it is.
        if (env.contains(QStringLiteral("ASAN_OPTIONS")))
            env.insert(QStringLiteral("ASAN_OPTIONS"), env.value(QStringLiteral("ASAN_OPTIONS")) + QStringLiteral(":detect_leaks=0"));
        QProcess tour;
        tour.setProcessEnvironment(env);
        tour.start(m_tool, {QStringLiteral("--root"), m_root, QStringLiteral("--home"), sampleHome(m_root), folder});
        QVERIFY(tour.waitForFinished(180000));
        QVERIFY2(tour.exitStatus() == QProcess::NormalExit && tour.exitCode() == 0, tour.readAllStandardError().constData());

        QStringList expected;
        for (const char *name : {"welcome", "installed", "detail", "detail-system", "trash-dialog", "removed-scanning", "removed",
                                 "removed-detail"})
            expected.append(QDir(folder).filePath(QLatin1String(name) + (dark ? QLatin1String("-dark.png") : QLatin1String("-light.png"))));
        // Every picture is announced once, in the order taken, and nothing else lands in the folder.
        QCOMPARE(QString::fromUtf8(tour.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts), expected);
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), expected.size());
        for (const QString &path : std::as_const(expected)) {
            const QImage picture(path);
            QVERIFY2(!picture.isNull(), qPrintable(path));
            QCOMPARE(picture.size(), QImage(expected.constFirst()).size());
        }
        // The system rows lie below the first screen of the result: the list must have moved.
        QVERIFY(QImage(expected.at(2)) != QImage(expected.at(3)));
    }
};

QTEST_GUILESS_MAIN(ScreenshotTourTest)

#include "tst_screenshottour.moc"
