// SPDX-License-Identifier: MIT
// Every case checks where each byte ended up: gone from its place and restorable from the Trash, or
// still in place and reported. HOME and XDG_DATA_HOME point into a sandbox before GLib first reads them.
#include "TestSupport.h"

#include "platform/NativePath.h"
#include "platform/Trash.h"
#include "services/DeletionService.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QStorageInfo>
#include <QTest>

#include <unistd.h>

#include <cstdio>

using namespace TestSupport;

namespace {

LeftoverItem item(const QString &path) { return LeftoverItem::at(path, LeftoverCategory::caches, 1); }

const QByteArray gone("<unreadable>");

} // namespace

class DeletionServiceTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;

    QString write(const QString &relative, const QByteArray &contents)
    {
        writeFile(m_root + QLatin1Char('/') + relative, contents);
        return m_root + QLatin1Char('/') + relative;
    }

private Q_SLOTS:
    void init()
    {
        sweepOnExit(m_dir.path());
        m_root = caseFolder(m_dir);
        makeFolder(m_root);
        // QDir cannot remove names that are not UTF-8.
        QCOMPARE(runProgram(QStringLiteral("rm"), {"-rf", homeTrash()}).exitCode, 0);
    }

    // Deeper first (in characters, not UTF-16 units), so a folder's own items go before it; a failure
    // stops nothing; what was not given stays, even behind a given link or a path that names it only
    // through "..", relative to the working folder, or as "/". Names that are not UTF-8 or hold a
    // newline, and a doubled separator (GIO records it as one), go as they are. Putting the run back
    // restores every byte, folders before what they held, but never over what took an item's place,
    // nor from an entry the Trash holds as coming from elsewhere.
    void runAndPutBack()
    {
        const QString file = write(QStringLiteral("Support/App/data.bin"), QByteArray("\0\1binary", 8));
        const QString nested = write(QStringLiteral("Support/App/sub/x"), "x");
        const QString folder = m_root + QStringLiteral("/Support/App");
        const QString kept = write(QStringLiteral("Support/kept.txt"), "K");
        const QString link = m_root + QStringLiteral("/link0");
        makeSymlink(kept, link);
        const QString raw = write(NativePath::decode(QByteArray("caf\xe9 \xff.plist")), "raw");
        const QString newline = write(QStringLiteral("two\nlines\u0301\u0301\u0301"), "newline"); // three characters fewer than UTF-16 units
        const QString doubled = write(QStringLiteral("Caches/double"), "doubled");
        const QString taken = write(QStringLiteral("Prefs/com.example.plist"), "old");
        const QString vanished = m_root + QStringLiteral("/gone/long/long/name.plist"); // the longest: tried first
        const QString previous = QDir::currentPath();
        QDir::setCurrent(m_root + QStringLiteral("/Support"));
        const DeletionReport report = DeletionService::moveToTrash(
            {item(folder), item(vanished), item(file), item(link), item(m_root + QStringLiteral("/Support/App/../kept.txt")), item("kept.txt"),
             item("/"), item(raw), item(newline), item(m_root + QStringLiteral("/Caches//double")), item(taken)});
        QDir::setCurrent(previous);
        QCOMPARE(pathsOf(report.deleted), (QStringList{taken, file, m_root + QStringLiteral("/Caches//double"), raw, folder, newline, link}));
        QCOMPARE(report.failed.size(), 4);
        QCOMPARE(report.failed.first().first.path(), vanished);
        QVERIFY2(report.failed.first().second.contains(QStringLiteral("No such file")), qPrintable(report.failed.first().second));
        for (const auto &[path, contents] : {std::pair(file, QByteArray("\0\1binary", 8)), {raw, "raw"}, {newline, "newline"}, {doubled, "doubled"}}) {
            QCOMPARE(readBytes(path), gone);
            QCOMPARE(readBytes(Trash::newestEntry(path).value_or(QString())), contents);
        }
        QCOMPARE(QFileInfo(Trash::newestEntry(link).value_or(QString())).symLinkTarget(), kept);
        QCOMPARE(readBytes(kept), QByteArray("K"));
        for (const QString &trashed : report.trashedPaths)
            QVERIFY2(trashed.startsWith(homeTrash() + QStringLiteral("/files/")), qPrintable(trashed));

        write(QStringLiteral("Prefs/com.example.plist"), "new");
        const QString stranger = m_root + QStringLiteral("/Prefs/stranger.plist");
        const RestoreReport restored = DeletionService::putBack(DeletionService::trashedItems(report)
                                                                << TrashedItem{item(stranger), report.trashedPaths.first()}
                                                                << TrashedItem{item(m_root + QStringLiteral("/Prefs/unknown.plist")), QString()});
        QCOMPARE(pathsOf(restored.restored), (QStringList{link, newline, folder, raw, m_root + QStringLiteral("/Caches//double"), file}));
        QCOMPARE(restored.failed.size(), 3);
        for (const auto &failure : restored.failed)
            QVERIFY2(!failure.second.isEmpty(), qPrintable(failure.first.path()));
        QCOMPARE(restored.failed.at(2).first.path(), taken);
        QVERIFY(restored.failed.at(2).second.contains(QStringLiteral("Something else")));
        for (const auto &[path, contents] : {std::pair(file, QByteArray("\0\1binary", 8)), {nested, "x"}, {raw, "raw"}, {newline, "newline"},
                                             {doubled, "doubled"}, {taken, "new"}, {stranger, gone}})
            QCOMPARE(readBytes(path), contents);
        QCOMPARE(QFileInfo(link).symLinkTarget(), kept);
        // Only the entry nothing could put back is left, with its record.
        QCOMPARE(readBytes(Trash::newestEntry(taken).value_or(QString())), QByteArray("old"));
        QCOMPARE(QDir(homeTrash() + QStringLiteral("/files")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System),
                 QStringList{QStringLiteral("com.example.plist")});
        QCOMPARE(QDir(homeTrash() + QStringLiteral("/info")).entryList(QDir::Files), QStringList{QStringLiteral("com.example.plist.trashinfo")});
    }

    // Two same-named items in one run, then the name again in a later run within the second: no copy
    // overwrites another, and the later one is the newest.
    void sameNameOverwritesNothing()
    {
        const QString first = write(QStringLiteral("A/com.example.plist"), "first");
        const QString second = write(QStringLiteral("B/com.example.plist"), "second");
        QVERIFY(!Trash::newestEntry(first));
        const DeletionReport both = DeletionService::moveToTrash({item(first), item(second)});
        write(QStringLiteral("A/com.example.plist"), "third");
        const DeletionReport again = DeletionService::moveToTrash({item(first)});
        QStringList contents;
        for (const QString &trashed : both.trashedPaths + again.trashedPaths)
            contents.append(QString::fromUtf8(readBytes(trashed)));
        QCOMPARE(contents, (QStringList{"first", "second", "third"}));
        QCOMPARE(readBytes(Trash::newestEntry(first).value_or(QString())), QByteArray("third"));
        QCOMPARE(readBytes(Trash::newestEntry(second).value_or(QString())), QByteArray("second"));
        QVERIFY(!Trash::newestEntry(m_root + QStringLiteral("/A/other")));
    }

    // GIO moves the item but writes an empty record when the Trash's disk is full; without the record
    // nothing could restore it, so it must come back and be reported.
    void fullDiskLeavesItemsInPlace()
    {
        if (!runningAsRoot())
            QSKIP("needs root to mount a small file system");
        QTemporaryDir scratch;
        const QString image = scratch.filePath(QStringLiteral("disk.img"));
        const QString disk = scratch.filePath(QStringLiteral("mnt"));
        makeFolder(disk);
        QCOMPARE(runProgram(QStringLiteral("mkfs.ext4"), {"-q", "-m", "0", image, "4M"}).exitCode, 0);
        const Run mounted = runProgram(QStringLiteral("mount"), {"-o", "loop", image, disk});
        if (mounted.exitCode != 0)
            QSKIP(qPrintable(QStringLiteral("mount is not available here: ") + QString::fromLocal8Bit(mounted.err)));
        const auto unmount = qScopeGuard([&] { (void)runProgram(QStringLiteral("umount"), {disk}); });
        const QString trash = disk + QStringLiteral("/.Trash-0");
        makeFolder(trash + QStringLiteral("/files"));
        makeFolder(trash + QStringLiteral("/info"));
        const QString file = disk + QStringLiteral("/Caches/data");
        const QString folder = disk + QStringLiteral("/Support/App");
        writeFile(file, "payload");
        writeFile(folder + QStringLiteral("/inner"), "inner");
        (void)runProgram(QStringLiteral("dd"), {"if=/dev/zero", "of=" + disk + "/filler", "bs=1024", "conv=fsync"});
        QCOMPARE(QStorageInfo(disk).bytesAvailable(), 0);

        const DeletionReport report = DeletionService::moveToTrash({item(file), item(folder)});
        QVERIFY(report.deleted.isEmpty());
        QCOMPARE(report.failed.size(), 2);
        for (const auto &failure : report.failed)
            QVERIFY2(failure.second.contains(QStringLiteral("could not record")), qPrintable(failure.second));
        QCOMPARE(readBytes(file), QByteArray("payload"));
        QCOMPARE(readBytes(folder + QStringLiteral("/inner")), QByteArray("inner"));
        QCOMPARE(QDir(trash + QStringLiteral("/files")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden), QStringList());
        QCOMPARE(QDir(trash + QStringLiteral("/info")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden), QStringList());

        // With room again, the mount's own Trash keeps relative records: found, and put back.
        QVERIFY(QFile::remove(disk + QStringLiteral("/filler")));
        const DeletionReport moved = DeletionService::moveToTrash({item(file)});
        QCOMPARE(moved.trashedPaths, QStringList{trash + QStringLiteral("/files/data")});
        QCOMPARE(Trash::newestEntry(file), std::optional<QString>(moved.trashedPaths.first()));
        QCOMPARE(DeletionService::putBack(DeletionService::trashedItems(moved)).restored.size(), 1);
        QCOMPARE(readBytes(file), QByteArray("payload"));
    }

    // Without a home folder there is no home Trash: the message says so instead of naming a missing file.
    void missingHomeIsNamed()
    {
        const QString file = write(QStringLiteral("Caches/data"), "stays");
        const Run child = runChild({m_root + QStringLiteral("/no-such-home"), file});
        const QString line = QString::fromUtf8(child.out).trimmed();
        QVERIFY2(line.startsWith("failed\t" + file + '\t') && line.contains(QStringLiteral("home folder")), qPrintable(line));
        QCOMPARE(readBytes(file), QByteArray("stays"));
    }

    void parentNotWritableFailsInPlace()
    {
        if (!runningAsRoot() || !canRunUnprivileged())
            QSKIP("needs root and setpriv to hand the folders to another user");
        SharedTemporaryDir shared;
        const QString home = shared.path() + QStringLiteral("/home");
        const QString locked = shared.path() + QStringLiteral("/Library/Locked/App");
        const QString open = shared.path() + QStringLiteral("/Library/Open/App.plist");
        writeFile(locked + QStringLiteral("/data"), "locked");
        writeFile(open, "open");
        makeFolder(home);
        for (const QString &path : {home, open, open.section(QLatin1Char('/'), 0, -2)})
            QVERIFY(::chown(QFile::encodeName(path).constData(), 65534, 65534) == 0);

        const QStringList lines = QString::fromUtf8(runChild({home, locked, open}, true).out).split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 2);
        QVERIFY2(lines.at(0).startsWith(QStringLiteral("moved\t") + open + '\t'), qPrintable(lines.at(0)));
        QVERIFY2(lines.at(1).startsWith("failed\t" + locked + '\t') && lines.at(1).contains("Permission denied"), qPrintable(lines.at(1)));
        QCOMPARE(readBytes(locked + QStringLiteral("/data")), QByteArray("locked"));
        QCOMPARE(readBytes(lines.at(0).section(QLatin1Char('\t'), 2)), QByteArray("open"));
    }
};

// Run by missingHomeIsNamed and parentNotWritableFailsInPlace: trashes the paths with the first argument
// as HOME, and prints one line per item.
static int trashAsChild(const QStringList &arguments)
{
    qputenv("HOME", NativePath::encode(arguments.first()));
    qputenv("XDG_DATA_HOME", NativePath::encode(arguments.first() + QStringLiteral("/data")));
    QList<LeftoverItem> items;
    for (const QString &path : arguments.mid(1))
        items.append(item(path));
    const DeletionReport report = DeletionService::moveToTrash(items);
    for (qsizetype k = 0; k < report.deleted.size(); ++k)
        std::printf("moved\t%s\t%s\n", report.deleted.at(k).path().toUtf8().constData(), report.trashedPaths.at(k).toUtf8().constData());
    for (const auto &[failed, message] : report.failed)
        std::printf("failed\t%s\t%s\n", failed.path().toUtf8().constData(), message.toUtf8().constData());
    return 0;
}

KESTRUNE_TEST_MAIN_WITH_CHILD(DeletionServiceTest, trashAsChild)

#include "tst_deletionservice.moc"
