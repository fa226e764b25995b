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
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

using namespace TestSupport;

namespace {

// The trashed copy of the item that came from originalPath, or an empty string.
QString trashedCopy(const QString &trash, const QString &originalPath)
{
    for (const Trashed &entry : trashedIn(trash)) {
        if (entry.originalPath == NativePath::encode(originalPath))
            return trash + QStringLiteral("/files/") + entry.name;
    }
    return QString();
}

LeftoverItem item(const QString &path) { return LeftoverItem::at(path, LeftoverCategory::caches, 1); }

QStringList paths(const QList<LeftoverItem> &items)
{
    QStringList result;
    for (const LeftoverItem &entry : items)
        result.append(entry.path());
    return result;
}

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

    void expectTrashed(const QString &path, const QByteArray &contents)
    {
        QCOMPARE(readBytes(path), QByteArray("<unreadable>")); // gone from its place
        QCOMPARE(readBytes(trashedCopy(homeTrash(), path)), contents);
    }

private Q_SLOTS:
    void init()
    {
        m_root = caseFolder(m_dir);
        QVERIFY(QDir().mkpath(m_root));
        // QDir cannot remove names that are not UTF-8.
        QCOMPARE(runProgram(QStringLiteral("rm"), {"-rf", homeTrash()}).exitCode, 0);
    }

    // Deeper first whichever comes first; equal lengths keep their order; lengths count characters, so three
    // combining accents (three UTF-16 units) add nothing.
    void processingOrder()
    {
        QList<LeftoverItem> items;
        for (const QString &path : {"/a/b", "/e\u0301\u0301\u0301", "/x/22", "/a/b/c", "/x/11"})
            items.append(item(path));
        QCOMPARE(paths(DeletionService::processingOrder(items)),
                 (QStringList{"/a/b/c", "/x/22", "/x/11", "/a/b", "/e\u0301\u0301\u0301"}));
    }

    // A folder's own items are trashed before it; a failure stops nothing; what was not given stays, even
    // behind a given symbolic link. Putting the run back restores every byte, folders before what they
    // held, and leaves the Trash without a record of it.
    void mixedRunAndPutBack()
    {
        const QString file = write(QStringLiteral("Support/App/data.bin"), QByteArray("\0\1binary", 8));
        const QString nested = write(QStringLiteral("Support/App/sub/x"), "x");
        const QString folder = m_root + QStringLiteral("/Support/App");
        const QString vanished = m_root + QStringLiteral("/gone/long/long/name.plist"); // the longest: tried first
        const QString a = write(QStringLiteral("a.txt"), "A");
        const QString kept = write(QStringLiteral("Support/kept.txt"), "K");
        const QString link = m_root + QStringLiteral("/link0");
        makeSymlink(kept, link);
        const DeletionReport report = DeletionService::moveToTrash({item(folder), item(vanished), item(file), item(a), item(link)});
        QCOMPARE(paths(report.deleted), (QStringList{file, folder, a, link}));
        QCOMPARE(report.failed.size(), 1);
        QCOMPARE(report.failed.first().first.path(), vanished);
        QVERIFY2(report.failed.first().second.contains(QStringLiteral("No such file")), qPrintable(report.failed.first().second));
        expectTrashed(file, QByteArray("\0\1binary", 8));
        expectTrashed(a, "A");
        QVERIFY(!trashedCopy(homeTrash(), folder).isEmpty());
        QCOMPARE(QFileInfo(trashedCopy(homeTrash(), link)).symLinkTarget(), kept);
        QCOMPARE(readBytes(link), QByteArray("<unreadable>"));
        QCOMPARE(readBytes(kept), QByteArray("K"));
        QCOMPARE(report.trashedPaths.size(), 4);
        for (const QString &trashed : report.trashedPaths)
            QVERIFY2(trashed.startsWith(homeTrash() + QStringLiteral("/files/")), qPrintable(trashed));

        const RestoreReport restored = DeletionService::putBack(DeletionService::trashedItems(report));
        QVERIFY2(restored.failed.isEmpty(), qPrintable(restored.failed.value(0).second));
        QCOMPARE(paths(restored.restored), (QStringList{a, link, folder, file}));
        QCOMPARE(readBytes(file), QByteArray("\0\1binary", 8));
        QCOMPARE(readBytes(nested), QByteArray("x"));
        QCOMPARE(QFileInfo(link).symLinkTarget(), kept);
        QVERIFY(trashedIn(homeTrash()).isEmpty());
        QCOMPARE(QDir(homeTrash() + QStringLiteral("/files")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System), QStringList());
    }

    void refusesPathsThatAreNotPlainAbsolute()
    {
        const QString keep = write(QStringLiteral("keep.txt"), "K");
        write(QStringLiteral("sub/x"), "x"); // so that sub/.. resolves
        const QString previous = QDir::currentPath();
        QDir::setCurrent(m_root);
        const DeletionReport report = DeletionService::moveToTrash({item("keep.txt"), item(m_root + "/sub/../keep.txt"), item("/")});
        QDir::setCurrent(previous);
        QVERIFY(report.deleted.isEmpty() && report.failed.size() == 3);
        QCOMPARE(readBytes(keep), QByteArray("K"));
    }

    // Names that are not UTF-8 or hold a newline, and a doubled separator (GIO records it as one): each
    // goes to the Trash and comes back byte for byte.
    void awkwardNamesComeBack_data()
    {
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("given");
        QTest::newRow("not UTF-8") << NativePath::decode(QByteArray("caf\xe9 \xff.plist")) << QString();
        QTest::newRow("newline") << QStringLiteral("two\nlines") << QString();
        QTest::newRow("doubled separator") << QStringLiteral("Caches/double") << QStringLiteral("Caches//double");
    }
    void awkwardNamesComeBack()
    {
        QFETCH(QString, written);
        QFETCH(QString, given);
        const QString path = write(written, "1");
        const DeletionReport report = DeletionService::moveToTrash({item(given.isEmpty() ? path : m_root + QLatin1Char('/') + given)});
        QVERIFY2(report.failed.isEmpty(), qPrintable(report.failed.value(0).second));
        expectTrashed(path, "1");
        QCOMPARE(DeletionService::putBack(DeletionService::trashedItems(report)).restored.size(), 1);
        QCOMPARE(readBytes(path), QByteArray("1"));
    }

    // Two same-named items in one run, then the name again in a later run within the second: no copy
    // overwrites another, and the later one is the newest.
    void sameNameOverwritesNothing()
    {
        const QString first = write(QStringLiteral("A/com.example.plist"), "first");
        const QString second = write(QStringLiteral("B/com.example.plist"), "second");
        QVERIFY(!Trash::newestEntry(first));
        QCOMPARE(DeletionService::moveToTrash({item(first), item(second)}).deleted.size(), 2);
        write(QStringLiteral("A/com.example.plist"), "third");
        QCOMPARE(DeletionService::moveToTrash({item(first)}).deleted.size(), 1);
        QStringList restored;
        for (const Trashed &entry : trashedIn(homeTrash()))
            restored.append(NativePath::decode(entry.originalPath) + QLatin1Char('=') + readBytes(homeTrash() + "/files/" + entry.name));
        restored.sort();
        QCOMPARE(restored, (QStringList{first + "=first", first + "=third", second + "=second"}));
        QCOMPARE(readBytes(Trash::newestEntry(first).value_or(QString())), QByteArray("third"));
        QVERIFY(!Trash::newestEntry(m_root + QStringLiteral("/A/other")));
    }

    // A path taken again, or an entry the Trash no longer holds as coming from there: nothing moves.
    void putBackOverwritesNothing()
    {
        const QString file = write(QStringLiteral("Prefs/com.example.plist"), "old");
        const QString other = write(QStringLiteral("Prefs/other.plist"), "other");
        const DeletionReport report = DeletionService::moveToTrash({item(file), item(other)});
        QCOMPARE(report.deleted.size(), 2);
        write(QStringLiteral("Prefs/com.example.plist"), "new");
        QList<TrashedItem> items = DeletionService::trashedItems(report);
        items.append({item(m_root + QStringLiteral("/Prefs/stranger.plist")), items.at(1).trashedPath}); // recorded for other
        items.append({item(m_root + QStringLiteral("/Prefs/unknown.plist")), QString()});
        const RestoreReport restored = DeletionService::putBack(items);
        QCOMPARE(paths(restored.restored), QStringList{other});
        QCOMPARE(restored.failed.size(), 3);
        for (const auto &failure : restored.failed)
            QVERIFY2(!failure.second.isEmpty(), qPrintable(failure.first.path()));
        QCOMPARE(restored.failed.at(2).first.path(), file);
        QVERIFY(restored.failed.at(2).second.contains(QStringLiteral("Something else")));
        QCOMPARE(readBytes(file), QByteArray("new"));
        QCOMPARE(readBytes(other), QByteArray("other"));
        QCOMPARE(readBytes(trashedCopy(homeTrash(), file)), QByteArray("old"));
        QVERIFY(!QFileInfo::exists(m_root + QStringLiteral("/Prefs/stranger.plist")));
    }

    // GIO moves the item but writes an empty record when the Trash's disk is full; without the record
    // nothing could restore it, so it must come back and be reported.
    void fullDiskLeavesItemsInPlace()
    {
        if (!runningAsRoot())
            QSKIP("needs root to mount a small file system");
        QTemporaryDir scratch;
        const QString image = scratch.filePath(QStringLiteral("disk.img"));
        const QString mountPoint = scratch.filePath(QStringLiteral("mnt"));
        makeFolder(mountPoint);
        QCOMPARE(runProgram(QStringLiteral("truncate"), {"-s", "4M", image}).exitCode, 0);
        QCOMPARE(runProgram(QStringLiteral("mkfs.ext4"), {"-q", "-m", "0", image}).exitCode, 0);
        const Run mounted = runProgram(QStringLiteral("mount"), {"-o", "loop", image, mountPoint});
        if (mounted.exitCode != 0)
            QSKIP(qPrintable(QStringLiteral("mount is not available here: ") + QString::fromLocal8Bit(mounted.err)));
        const auto unmount = qScopeGuard([&] { (void)runProgram(QStringLiteral("umount"), {mountPoint}); });

        const QString trash = mountPoint + QStringLiteral("/.Trash-0");
        makeFolder(trash + QStringLiteral("/files"));
        makeFolder(trash + QStringLiteral("/info"));
        QVERIFY(::chmod(QFile::encodeName(trash).constData(), 0700) == 0);
        const QString file = mountPoint + QStringLiteral("/Caches/data");
        const QString folder = mountPoint + QStringLiteral("/Support/App");
        writeFile(file, "payload");
        writeFile(folder + QStringLiteral("/inner"), "inner");
        // Blocks held back for delayed writes come free at a sync, so the disk is filled until none are left.
        for (int round = 0; round < 5 && QStorageInfo(mountPoint).bytesAvailable() > 0; ++round) {
            (void)runProgram(QStringLiteral("dd"), {"if=/dev/zero", "of=" + mountPoint + "/filler" + QString::number(round), "bs=1024"});
            ::sync();
            QStorageInfo(mountPoint).refresh();
        }
        QCOMPARE(QStorageInfo(mountPoint).bytesAvailable(), 0);

        const DeletionReport report = DeletionService::moveToTrash({item(file), item(folder)});
        QVERIFY(report.deleted.isEmpty());
        QCOMPARE(report.failed.size(), 2);
        for (const auto &failure : report.failed)
            QVERIFY2(failure.second.contains(QStringLiteral("could not record")), qPrintable(failure.second));
        QCOMPARE(readBytes(file), QByteArray("payload"));
        QCOMPARE(readBytes(folder + QStringLiteral("/inner")), QByteArray("inner"));
        const QDir::Filters all = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System;
        QCOMPARE(QDir(trash + QStringLiteral("/files")).entryList(all), QStringList());
        QCOMPARE(QDir(trash + QStringLiteral("/info")).entryList(all), QStringList());

        // With room again, the mount's own Trash keeps relative records: found, and put back.
        for (const QString &filler : QDir(mountPoint).entryList({QStringLiteral("filler*")}))
            QVERIFY(QFile::remove(mountPoint + QLatin1Char('/') + filler));
        const DeletionReport moved = DeletionService::moveToTrash({item(file)});
        QVERIFY2(moved.failed.isEmpty(), qPrintable(moved.failed.value(0).second));
        QCOMPARE(moved.trashedPaths, QStringList{trash + QStringLiteral("/files/data")});
        QCOMPARE(Trash::newestEntry(file), std::optional<QString>(moved.trashedPaths.first()));
        QCOMPARE(DeletionService::putBack(DeletionService::trashedItems(moved)).restored.size(), 1);
        QCOMPARE(readBytes(file), QByteArray("payload"));
    }

    // Without a home folder there is no home Trash: the message says so instead of naming a missing file.
    void missingHomeIsNamed()
    {
        const QString file = write(QStringLiteral("Caches/data"), "stays");
        const QString home = m_root + QStringLiteral("/no-such-home");
        const Run child = runProgram(QCoreApplication::applicationFilePath(), {"--trash-as-child", home, file});
        QCOMPARE(child.exitCode, 0);
        const QString line = QString::fromUtf8(child.out).trimmed();
        QVERIFY2(line.startsWith("failed\t" + file + '\t') && line.contains(QStringLiteral("home folder")), qPrintable(line));
        QCOMPARE(readBytes(file), QByteArray("stays"));
    }

    void parentNotWritableFailsInPlace()
    {
        if (!runningAsRoot() || !canRunUnprivileged())
            QSKIP("needs root and setpriv to hand the folders to another user");
        // The sandbox is private to root; the unprivileged user needs a world-readable case folder.
        QTemporaryDir shared(QStringLiteral("/tmp/kestrune-trash-XXXXXX"));
        ::chmod(QFile::encodeName(shared.path()).constData(), 0755);
        const QString home = shared.path() + QStringLiteral("/home");
        const QString locked = shared.path() + QStringLiteral("/Library/Locked/App");
        const QString open = shared.path() + QStringLiteral("/Library/Open/App.plist");
        writeFile(locked + QStringLiteral("/data"), "locked");
        writeFile(open, "open");
        makeFolder(home);
        for (const QString &path : {home, open, open.section(QLatin1Char('/'), 0, -2)})
            QVERIFY(::chown(QFile::encodeName(path).constData(), 65534, 65534) == 0);

        const Run child = runProgram(QCoreApplication::applicationFilePath(), {"--trash-as-child", home, locked, open}, true);
        QCOMPARE(child.exitCode, 0);
        const QStringList lines = QString::fromUtf8(child.out).split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines.at(0), QStringLiteral("moved\t") + open);
        QVERIFY2(lines.at(1).startsWith("failed\t" + locked + '\t') && lines.at(1).contains("Permission denied"), qPrintable(lines.at(1)));
        QCOMPARE(readBytes(locked + QStringLiteral("/data")), QByteArray("locked"));
        QCOMPARE(readBytes(trashedCopy(home + QStringLiteral("/data/Trash"), open)), QByteArray("open"));
    }
};

// Run under setpriv by parentNotWritableFailsInPlace: trashes the paths as an unprivileged user and
// prints one line per item.
static int trashAsChild(int argc, char *argv[])
{
    qputenv("HOME", argv[2]);
    qputenv("XDG_DATA_HOME", QByteArray(argv[2]) + "/data");
    QList<LeftoverItem> items;
    for (int i = 3; i < argc; ++i)
        items.append(item(NativePath::decode(QByteArray(argv[i]))));
    const DeletionReport report = DeletionService::moveToTrash(items);
    for (const LeftoverItem &moved : report.deleted)
        std::printf("moved\t%s\n", moved.path().toUtf8().constData());
    for (const auto &[failed, message] : report.failed)
        std::printf("failed\t%s\t%s\n", failed.path().toUtf8().constData(), message.toUtf8().constData());
    return 0;
}

int main(int argc, char *argv[])
{
    if (argc >= 3 && qstrcmp(argv[1], "--trash-as-child") == 0)
        return trashAsChild(argc, argv);
    QCoreApplication application(argc, argv);
    DeletionServiceTest test;
    return execWithPrivateTrash(&test, argc, argv);
}

#include "tst_deletionservice.moc"
