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

namespace {

const QString tool = QStringLiteral(KESTRUNE_BINARY_DIR "/tools/screenshot_tour/kestrune-screenshots");
const QString darkDesktop = QStringLiteral(KESTRUNE_BINARY_DIR "/tests/dark-desktop");
const QStringList allPictures = {QStringLiteral("welcome"),       QStringLiteral("installed"),
                                 QStringLiteral("detail"),        QStringLiteral("detail-system"),
                                 QStringLiteral("trash-dialog"),  QStringLiteral("removed-scanning"),
                                 QStringLiteral("removed"),       QStringLiteral("removed-detail")};

} // namespace

class ScreenshotTourTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_root;

    Run tour(const QStringList &arguments, const QStringList &environment = {})
    {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        // Under the sanitizers Qt 6.4's software scene graph leaves an icon's texture behind at exit
        // (a cycle of QSGTexture, QPixmap and QImage data, all inside Qt): the tour is a developer's
        // tool, so its leaks are not checked; everything else about it is.
        if (env.contains(QStringLiteral("ASAN_OPTIONS")))
            env.insert(QStringLiteral("ASAN_OPTIONS"), env.value(QStringLiteral("ASAN_OPTIONS")) + QStringLiteral(":detect_leaks=0"));
        for (const QString &setting : environment)
            env.insert(setting.section(QLatin1Char('='), 0, 0), setting.section(QLatin1Char('='), 1));
        process.setProcessEnvironment(env);
        process.start(tool, QStringList{QStringLiteral("--root"), m_root, QStringLiteral("--home"), sampleHome(m_root)} + arguments);
        if (!process.waitForFinished(180000) || process.exitStatus() != QProcess::NormalExit)
            return Run{-1, process.readAllStandardOutput(), process.readAllStandardError()};
        return Run{process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (!QFileInfo(tool).isExecutable())
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
        QTest::addColumn<QStringList>("environment");
        QTest::addColumn<QStringList>("only");
        QTest::addColumn<QString>("suffix");
        QTest::newRow("platform palette") << QStringList() << QStringList() << QStringLiteral("-light.png");
        QTest::newRow("dark desktop") << QStringList{QStringLiteral("QT_QPA_PLATFORMTHEME=qt6ct"),
                                                     QStringLiteral("XDG_CONFIG_HOME=") + darkDesktop}
                                      << QStringList() << QStringLiteral("-dark.png");
        QTest::newRow("chosen pictures") << QStringList()
                                         << QStringList{QStringLiteral("removed-detail"), QStringLiteral("installed")}
                                         << QStringLiteral("-light.png");
    }

    void writesEveryPicture()
    {
        QFETCH(QStringList, environment);
        QFETCH(QStringList, only);
        QFETCH(QString, suffix);
        if (!environment.isEmpty() && !QFileInfo::exists(darkDesktop))
            QSKIP("qt6ct is not installed");
        const QString folder = caseFolder(m_dir);

        const Run run = tour(QStringList{folder} + only, environment);
        QVERIFY2(run.exitCode == 0, run.err.constData());

        QStringList expected;
        for (const QString &name : allPictures) {
            if (only.isEmpty() || only.contains(name))
                expected.append(QDir(folder).filePath(name + suffix));
        }
        // Every picture is announced once, in the order taken, and nothing else lands in the folder.
        QCOMPARE(QString::fromUtf8(run.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts), expected);
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), expected.size());
        for (const QString &path : std::as_const(expected)) {
            const QImage picture(path);
            QVERIFY2(!picture.isNull(), qPrintable(path));
            QCOMPARE(picture.size(), QImage(expected.constFirst()).size());
        }
        if (only.isEmpty()) {
            // The system rows lie below the first screen of the result: the list must have moved.
            QVERIFY(QImage(expected.at(2)) != QImage(expected.at(3)));
        }
    }

    void refusesBadArguments_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("no folder") << QStringList();
        QTest::newRow("unknown picture") << QStringList{QStringLiteral("OUT"), QStringLiteral("welcome"), QStringLiteral("splash")};
        QTest::newRow("root is a file") << QStringList{QStringLiteral("--root"), QStringLiteral(KESTRUNE_SAMPLE_MAC_TOOL), QStringLiteral("OUT")};
    }

    void refusesBadArguments()
    {
        QFETCH(QStringList, arguments);
        const QString folder = caseFolder(m_dir);
        arguments.replaceInStrings(QStringLiteral("OUT"), folder);

        const Run run = tour(arguments);
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.out.isEmpty());
        QVERIFY(!QFileInfo::exists(folder) || QDir(folder).isEmpty());
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    ScreenshotTourTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_screenshottour.moc"
