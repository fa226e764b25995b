// SPDX-License-Identifier: MIT
// What the user may do to other apps' files: move an app's bundle to the Trash (asked before anything of
// the app moves), list other apps' Library folders (privacy protection hides them), and which items
// need an administrator. Ownership and
// unlistable folders (mode 000) are looked at by an unprivileged user (setpriv), since root may write
// and list everything.
#include "TestSupport.h"
#include "platform/FileSystemLayout.h"
#include "services/BundleRemovability.h"
#include "services/LibraryAccess.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

using namespace TestSupport;
using Obstacle = BundleRemovability::Obstacle;

class PermissionsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // With every right: only the place and the identifier count, and a bundle that is gone is left for
    // the Trash to report.
    void placeAndIdentifier()
    {
        QTemporaryDir root;
        FileSystemLayout::setRoot(root.path());
        const auto obstacle = [&](const QString &folder, const QString &identifier) {
            const QString bundle = root.path() + folder + QStringLiteral("/Notes.app");
            writeApp(bundle, QStringLiteral("Notes"), identifier);
            return BundleRemovability::obstacle(bundle, identifier.isEmpty() ? std::nullopt : std::optional(identifier));
        };
        QCOMPARE(obstacle("/Applications", "com.example.Notes"), Obstacle::none);
        QCOMPARE(obstacle("/Users/ann/Applications", ""), Obstacle::none);
        QCOMPARE(obstacle("/System/Applications", "com.example.Tool"), Obstacle::systemLocation);
        QCOMPARE(obstacle("/usr/local/libexec", "com.example.Tool"), Obstacle::systemLocation);
        QCOMPARE(obstacle("/Applications", "COM.Apple.iMovieApp"), Obstacle::appleApp);
        QCOMPARE(obstacle("/Applications", "com.applesoft.Tool"), Obstacle::none);
        QCOMPARE(BundleRemovability::obstacle(root.path() + QStringLiteral("/Elsewhere/Gone.app"), std::nullopt), Obstacle::none);
    }

    // The holding folder root's and the bundle the user's, the other way round, and both the user's.
    void ownership()
    {
        if (!runningAsRoot() || !canRunUnprivileged())
            QSKIP("needs root and setpriv to hand the folders to another user");
        SharedTemporaryDir root;
        QStringList bundles;
        for (const auto &[folderOwner, bundleOwner] : {std::pair(0u, 65534u), {65534u, 0u}, {65534u, 65534u}}) {
            const QString folder = root.path() + QStringLiteral("/Applications") + QString::number(bundles.size());
            bundles.append(folder + QStringLiteral("/Notes.app"));
            writeApp(bundles.last(), QStringLiteral("Notes"), QStringLiteral("com.example.Notes"));
            QVERIFY(::chown(QFile::encodeName(folder).constData(), folderOwner, folderOwner) == 0);
            QVERIFY(::chown(QFile::encodeName(bundles.last()).constData(), bundleOwner, bundleOwner) == 0);
        }
        QCOMPARE(runChild(QStringList{QStringLiteral("obstacles"), root.path()} + bundles, true).out,
                 QStringLiteral("%1\n%2\n%3\n").arg(int(Obstacle::folderNotWritable)).arg(int(Obstacle::bundleNotWritable)).arg(int(Obstacle::none)).toUtf8());
    }

    // Items of the system's Library, and of the kinds that only an administrator installs.
    void requiresAdmin()
    {
        auto admin = [](const QString &root, const QString &path, LeftoverCategory category) {
            TestSupport::useLayout(root, root + QStringLiteral("/Users/ann"));
            return LeftoverItem::at(path, category, 1).requiresAdmin();
        };
        using C = LeftoverCategory;
        QVERIFY(admin("/", "/Library/Application Support/Foo", C::applicationSupport));
        QVERIFY(!admin("/", "/Users/ann/Library/Application Support/Foo", C::applicationSupport));
        QVERIFY(admin("/", "/Users/ann/x.plist", C::launchDaemons));
        QVERIFY(admin("/", "/tmp/helper", C::privilegedHelperTools));
        QVERIFY(admin("/", "/LibraryX/foo", C::other)); // the prefix is plain text, not a path component
        QVERIFY(admin("/tmp/mac", "/tmp/mac/Library/Caches/x", C::caches));
        QVERIFY(!admin("/tmp/mac", "/Library/Caches/x", C::caches));
    }

    // On a sample Mac through the command line: nothing of the app moves, and the message names the
    // administrator's way.
    void commandLineMovesNothing()
    {
        SharedTemporaryDir sample;
        sample.setAutoRemove(false); // names that are not UTF-8: swept at exit instead
        QString log;
        QVERIFY2(generateSampleMac(sample.path(), 1, QStringLiteral("small"), &log), qPrintable(log));
        const QString home = sampleHome(sample.path());
        writeApp(sample.path() + QStringLiteral("/Applications/Safari.app"), QStringLiteral("Safari"), QStringLiteral("com.apple.Safari"));
        writeFile(home + QStringLiteral("/Library/Caches/com.apple.Safari/cache.db"), "cache");
        // The unprivileged user may not write the sample Mac.
        for (const auto &[target, reason, unprivileged] : {std::tuple("Safari", "is an Apple app", false), {"Acme Notes", "you may not take items out of", true}}) {
            if (unprivileged && (!runningAsRoot() || !canRunUnprivileged()))
                QSKIP("needs root and setpriv to run as a user who may not write the sample Mac");
            const QJsonArray items = QJsonDocument::fromJson(runCliOn(sample.path(), home, {"scan", target, "--json"}).out)[u"items"].toArray();
            QVERIFY(items.size() >= 2);
            const Run remove = runCliOn(sample.path(), home, {"remove", target, "--yes", "--json"}, unprivileged);
            QCOMPARE(remove.exitCode, 1);
            QVERIFY2(remove.err.contains("Nothing was moved") && remove.err.contains(reason) && remove.err.contains("administrator"), remove.err.constData());
            QVERIFY(remove.out.isEmpty());
            for (const QJsonValue &item : items)
                QVERIFY2(QFileInfo::exists(item[u"path"].toString()), qPrintable(item[u"path"].toString()));
        }
    }

    // One home each: the folders in it, the one made unlistable, and whether the scan is refused.
    void refusal()
    {
        if (runningAsRoot() && !canRunUnprivileged())
            QSKIP("running as root without setpriv: every folder can be listed");
        const QStringList both{"Library/Containers/com.other.app/Data", "Library/Group Containers/group.com.other/Library"};
        const QList<std::tuple<QStringList, QString, bool>> homes{
            {{"Library/Caches"}, "", false},
            {both, "Library/Containers", true},
            {both, "Library/Containers/com.other.app", true},
            {both, "Library/Group Containers/group.com.other", true},
            {both, "Library/Containers/com.other.app/Data", true},
            // Deeper folders are the scanners' business, and so is the rest of the Library.
            {both + QStringList{"Library/Containers/com.other.app/Data/Library"}, "Library/Containers/com.other.app/Data/Library", false},
            {both + QStringList{"Library/Caches/locked"}, "Library/Caches/locked", false},
        };
        SharedTemporaryDir shared;
        QStringList arguments{QStringLiteral("refused")}, locked;
        QByteArray expected;
        for (const auto &[folders, lockedFolder, refused] : homes) {
            arguments.append(shared.path() + QLatin1Char('/') + QString::number(arguments.size()));
            for (const QString &folder : folders)
                makeFolder(arguments.last() + QLatin1Char('/') + folder);
            if (!lockedFolder.isEmpty())
                locked.append(arguments.last() + QLatin1Char('/') + lockedFolder);
            expected += refused ? "refused\n" : "readable\n";
        }
        for (const QString &folder : locked)
            QVERIFY(::chmod(QFile::encodeName(folder).constData(), 0) == 0);
        const Run child = runChild(arguments, true);
        for (const QString &folder : locked)
            QVERIFY(::chmod(QFile::encodeName(folder).constData(), 0755) == 0);
        QCOMPARE(child.out, expected);
    }
};

// Run as nobody by ownership and refusal: the obstacle of each bundle under the root, or whether each
// home's Library is refused, one a line.
static int asChild(const QStringList &arguments)
{
    if (arguments.first() == QLatin1String("refused")) {
        for (const QString &home : arguments.mid(1)) {
            FileSystemLayout::setHome(home);
            std::printf("%s\n", LibraryAccess::isRefused() ? "refused" : "readable");
        }
        return 0;
    }
    FileSystemLayout::setRoot(arguments.at(1));
    for (const QString &bundle : arguments.mid(2))
        std::printf("%d\n", int(BundleRemovability::obstacle(bundle, QStringLiteral("com.example.Notes"))));
    return 0;
}

// Should a check ever let a run through, nothing reaches the real Trash.
KESTRUNE_TEST_MAIN_WITH_CHILD(PermissionsTest, asChild)

#include "tst_permissions.moc"
