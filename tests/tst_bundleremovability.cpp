// SPDX-License-Identifier: MIT
// Whether an app's bundle can go to the Trash, asked before anything of the app moves. Permission rows
// run the check as an unprivileged user (setpriv), since root may write everywhere.
#include "TestSupport.h"
#include "platform/FileSystemLayout.h"
#include "platform/NativePath.h"
#include "services/BundleRemovability.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

using namespace TestSupport;
using Obstacle = BundleRemovability::Obstacle;
Q_DECLARE_METATYPE(Obstacle)

namespace {

constexpr uid_t nobody = 65534;

void own(const QString &path, uid_t owner, mode_t mode)
{
    const QByteArray native = NativePath::encode(path);
    QVERIFY(::chown(native.constData(), owner, owner) == 0);
    QVERIFY(::chmod(native.constData(), mode) == 0);
}

} // namespace

class BundleRemovabilityTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void obstacles_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("unprivileged");
        QTest::addColumn<uid_t>("folderOwner");
        QTest::addColumn<uid_t>("bundleOwner");
        QTest::addColumn<Obstacle>("expected");
        QTest::newRow("ordinary app") << "/Applications" << "com.example.Notes" << false << 0u << 0u << Obstacle::none;
        QTest::newRow("home applications") << "/Users/ann/Applications" << "" << false << 0u << 0u << Obstacle::none;
        QTest::newRow("system applications") << "/System/Applications" << "com.example.Tool" << false << 0u << 0u << Obstacle::systemLocation;
        QTest::newRow("under usr") << "/usr/local/libexec" << "com.example.Tool" << false << 0u << 0u << Obstacle::systemLocation;
        QTest::newRow("apple app") << "/Applications" << "com.apple.Safari" << false << 0u << 0u << Obstacle::appleApp;
        QTest::newRow("apple app in other case") << "/Applications" << "COM.Apple.iMovieApp" << false << 0u << 0u << Obstacle::appleApp;
        QTest::newRow("apple-like vendor") << "/Applications" << "com.applesoft.Tool" << false << 0u << 0u << Obstacle::none;
        QTest::newRow("folder of root") << "/Applications" << "com.example.Notes" << true << 0u << nobody << Obstacle::folderNotWritable;
        QTest::newRow("bundle of root") << "/Applications" << "com.example.Notes" << true << nobody << 0u << Obstacle::bundleNotWritable;
        QTest::newRow("all the user's") << "/Applications" << "com.example.Notes" << true << nobody << nobody << Obstacle::none;
    }

    void obstacles()
    {
        QFETCH(QString, folder);
        QFETCH(QString, identifier);
        QFETCH(bool, unprivileged);
        QFETCH(uid_t, folderOwner);
        QFETCH(uid_t, bundleOwner);
        QFETCH(Obstacle, expected);
        if (unprivileged && (!runningAsRoot() || !canRunUnprivileged()))
            QSKIP("needs root and setpriv to hand the folders to another user");
        // World-readable, so the unprivileged user can reach the bundle.
        QTemporaryDir root(QStringLiteral("/tmp/kestrune-removability-XXXXXX"));
        QVERIFY(::chmod(QFile::encodeName(root.path()).constData(), 0755) == 0);
        const QString bundle = root.path() + folder + QStringLiteral("/Notes.app");
        writeApp(bundle, QStringLiteral("Notes"), identifier);
        if (unprivileged) {
            own(root.path() + folder, folderOwner, 0755);
            own(bundle, bundleOwner, 0755);
        }

        int found = -1;
        if (unprivileged) {
            const Run child = runProgram(QCoreApplication::applicationFilePath(), {"--obstacle-as-child", root.path(), bundle, identifier}, true);
            QCOMPARE(child.exitCode, 0);
            found = child.out.trimmed().toInt();
        } else {
            FileSystemLayout::setRoot(root.path());
            found = int(BundleRemovability::obstacle(bundle, identifier.isEmpty() ? std::nullopt : std::optional(identifier)));
        }
        QCOMPARE(Obstacle(found), expected);
    }

    void vanishedBundleIsLeftToTheTrash()
    {
        QTemporaryDir root;
        FileSystemLayout::setRoot(root.path());
        QCOMPARE(BundleRemovability::obstacle(root.path() + QStringLiteral("/Applications/Gone.app"), std::nullopt), Obstacle::none);
    }

    // On a sample Mac through the command line: nothing of the app moves, and the message names the
    // administrator's way.
    void commandLineMovesNothing_data()
    {
        QTest::addColumn<bool>("unprivileged");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("reason");
        QTest::newRow("unwritable folder") << true << "Acme Notes" << "you may not take items out of";
        QTest::newRow("apple app") << false << "Safari" << "is an Apple app";
    }

    void commandLineMovesNothing()
    {
        QFETCH(bool, unprivileged);
        QFETCH(QString, target);
        QFETCH(QString, reason);
        if (unprivileged && (!runningAsRoot() || !canRunUnprivileged()))
            QSKIP("needs root and setpriv to run as a user who may not write the sample Mac");
        QTemporaryDir sample(QStringLiteral("/tmp/kestrune-removability-XXXXXX"));
        sample.setAutoRemove(false); // names that are not UTF-8: swept at exit instead
        QVERIFY(::chmod(QFile::encodeName(sample.path()).constData(), 0755) == 0);
        QString log;
        QVERIFY2(generateSampleMac(sample.path(), 1, QStringLiteral("small"), &log), qPrintable(log));
        writeApp(sample.path() + QStringLiteral("/Applications/Safari.app"), QStringLiteral("Safari"), QStringLiteral("com.apple.Safari"));
        writeFile(sampleHome(sample.path()) + QStringLiteral("/Library/Caches/com.apple.Safari/cache.db"), "cache");
        const QStringList where{"--root", sample.path(), "--home", sampleHome(sample.path())};

        const Run scan = runCli(where + QStringList{"scan", target, "--json"});
        QCOMPARE(scan.exitCode, 0);
        const QJsonArray items = QJsonDocument::fromJson(scan.out).object().value("items").toArray();
        QVERIFY(items.size() >= 2);

        const Run remove = runCli(where + QStringList{"remove", target, "--yes", "--json"}, unprivileged);
        QCOMPARE(remove.exitCode, 1);
        const QString message = QString::fromUtf8(remove.err);
        QVERIFY2(message.contains(QStringLiteral("Nothing was moved")) && message.contains(reason)
                     && message.contains(QStringLiteral("administrator")), qPrintable(message));
        QVERIFY(remove.out.isEmpty());
        for (const QJsonValue &item : items)
            QVERIFY2(QFileInfo::exists(item.toObject().value("path").toString()), qPrintable(item.toObject().value("path").toString()));
    }
};

// Run under setpriv by obstacles: prints the obstacle the unprivileged user meets.
static int obstacleAsChild(char *argv[])
{
    FileSystemLayout::setRoot(NativePath::decode(QByteArray(argv[2])));
    const QString identifier = QString::fromUtf8(argv[4]);
    const Obstacle found = BundleRemovability::obstacle(NativePath::decode(QByteArray(argv[3])),
                                                        identifier.isEmpty() ? std::nullopt : std::optional(identifier));
    std::printf("%d\n", int(found));
    return 0;
}

int main(int argc, char *argv[])
{
    if (argc == 5 && qstrcmp(argv[1], "--obstacle-as-child") == 0)
        return obstacleAsChild(argv);
    QCoreApplication application(argc, argv);
    BundleRemovabilityTest test;
    // Should a check ever let a run through, nothing reaches the real Trash.
    return execWithPrivateTrash(&test, argc, argv);
}

#include "tst_bundleremovability.moc"
