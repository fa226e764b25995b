// SPDX-License-Identifier: MIT
// Every case checks where each byte ended up: gone from its place and restorable from the Trash, or
// still in place and reported. HOME and XDG_DATA_HOME point into a sandbox before GLib first reads them.
#include "TestSupport.h"

#include "platform/NativePath.h"
#include "services/DeletionService.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

using namespace TestSupport;

namespace {

bool lexists(const QString &path)
{
    struct stat info;
    return ::lstat(NativePath::encode(path).constData(), &info) == 0;
}

QString failures(const DeletionReport &report)
{
    QStringList lines;
    for (const auto &[failed, message] : report.failed)
        lines.append(failed.path() + QStringLiteral(": ") + message);
    return lines.join(QLatin1Char('\n'));
}

// The trashed copy of the item that came from originalPath, or an empty string.
QString trashedCopy(const QString &trash, const QString &originalPath)
{
    const QByteArray native = NativePath::encode(originalPath);
    for (const Trashed &entry : trashedIn(trash)) {
        if (entry.originalPath == native)
            return trash + QStringLiteral("/files/") + entry.name;
    }
    return QString();
}

LeftoverItem item(const QString &path)
{
    return LeftoverItem::at(path, LeftoverCategory::caches, 1);
}

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

private:
    QTemporaryDir m_dir;
    QString m_root;

    QString write(const QString &relative, const QByteArray &contents)
    {
        writeFile(m_root + QLatin1Char('/') + relative, contents);
        return m_root + QLatin1Char('/') + relative;
    }

    void expectTrashed(const QString &path, const QByteArray &contents)
    {
        QVERIFY2(!lexists(path), qPrintable(path + QStringLiteral(" is still in place")));
        const QString copy = trashedCopy(homeTrash(), path);
        QVERIFY2(!copy.isEmpty(), qPrintable(path + QStringLiteral(" has no restorable record in the Trash")));
        QCOMPARE(readBytes(copy), contents);
    }

private Q_SLOTS:
    void init()
    {
        QVERIFY(m_dir.isValid());
        m_root = caseFolder(m_dir);
        QVERIFY(QDir().mkpath(m_root));
        // QDir cannot remove names that are not UTF-8.
        QCOMPARE(runProgram(QStringLiteral("rm"), {"-rf", homeTrash()}).exitCode, 0);
    }

    void processingOrder_data()
    {
        QTest::addColumn<QStringList>("given");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("deeper given last") << QStringList{"/a/b", "/a/b/c"} << QStringList{"/a/b/c", "/a/b"};
        QTest::newRow("deeper given first") << QStringList{"/a/b/c", "/a/b"} << QStringList{"/a/b/c", "/a/b"};
        QTest::newRow("equal lengths keep their order")
            << QStringList{"/x/22", "/a/b/c", "/x/11", "/y/33"} << QStringList{"/a/b/c", "/x/22", "/x/11", "/y/33"};
        // Three combining accents are three UTF-16 units but no extra characters.
        QTest::newRow("characters, not code units")
            << QStringList{QStringLiteral("/e\u0301\u0301\u0301"), QStringLiteral("/abc")}
            << QStringList{QStringLiteral("/abc"), QStringLiteral("/e\u0301\u0301\u0301")};
    }

    void processingOrder()
    {
        QFETCH(QStringList, given);
        QFETCH(QStringList, expected);
        QList<LeftoverItem> items;
        for (const QString &path : given)
            items.append(item(path));
        QCOMPARE(paths(DeletionService::processingOrder(items)), expected);
    }

    void emptyListTouchesNothing()
    {
        const DeletionReport report = DeletionService::moveToTrash({});
        QVERIFY(report.deleted.isEmpty());
        QVERIFY(report.failed.isEmpty());
        QVERIFY(!QFileInfo::exists(homeTrash()));
    }

    // Deeper paths go first, so a folder's own items are trashed before it; a failure stops nothing.
    void mixedRun()
    {
        const QString file = write(QStringLiteral("Support/App/data.bin"), "inner");
        const QString folder = m_root + QStringLiteral("/Support/App");
        const QString vanished = m_root + QStringLiteral("/gone/long/long/name.plist"); // the longest: tried first
        const QString a = write(QStringLiteral("a.txt"), "A");
        const DeletionReport report = DeletionService::moveToTrash({item(folder), item(vanished), item(file), item(a)});
        QCOMPARE(paths(report.deleted), (QStringList{file, folder, a}));
        QCOMPARE(report.failed.size(), 1);
        QCOMPARE(report.failed.first().first.path(), vanished);
        QVERIFY2(report.failed.first().second.contains(QStringLiteral("No such file")), qPrintable(report.failed.first().second));
        expectTrashed(file, "inner");
        expectTrashed(a, "A");
        QVERIFY(!trashedCopy(homeTrash(), folder).isEmpty());
        QVERIFY(QFileInfo::exists(m_root + QStringLiteral("/Support")));
    }

    void refusesPathsThatAreNotPlainAbsolute_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("empty") << QString();
        QTest::newRow("relative") << QStringLiteral("keep.txt");
        QTest::newRow("dot-dot") << QStringLiteral("%ROOT%/sub/../keep.txt");
        QTest::newRow("root") << QStringLiteral("/");
    }

    void refusesPathsThatAreNotPlainAbsolute()
    {
        QFETCH(QString, path);
        const QString keep = write(QStringLiteral("keep.txt"), "K");
        write(QStringLiteral("sub/x"), "x");
        path.replace(QStringLiteral("%ROOT%"), m_root);
        const QString previous = QDir::currentPath();
        QDir::setCurrent(m_root);
        const DeletionReport report = DeletionService::moveToTrash({item(path)});
        QDir::setCurrent(previous);
        QVERIFY(report.deleted.isEmpty());
        QCOMPARE(report.failed.size(), 1);
        QCOMPARE(readBytes(keep), QByteArray("K"));
        QVERIFY(QFileInfo::exists(m_root + QStringLiteral("/sub/x")));
    }

    void symbolicLinkMovesTargetStays()
    {
        const QString target = write(QStringLiteral("target.txt"), "T");
        const QString link = m_root + QStringLiteral("/link");
        makeSymlink(target, link);
        const DeletionReport report = DeletionService::moveToTrash({item(link)});
        QCOMPARE(paths(report.deleted), QStringList{link});
        QVERIFY(!lexists(link));
        QCOMPARE(readBytes(target), QByteArray("T"));
        const QString copy = trashedCopy(homeTrash(), link);
        QVERIFY(QFileInfo(copy).isSymLink());
        QCOMPARE(QFileInfo(copy).symLinkTarget(), target);
    }

    void awkwardNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("newline") << QStringLiteral("two\nlines");
        QTest::newRow("percent") << QStringLiteral("100% done %2F");
        QTest::newRow("not UTF-8") << NativePath::decode(QByteArray("caf\xe9 \xff.plist"));
        QTest::newRow("Unicode") << QStringLiteral("Ünïcødé 日本語 🍎");
    }

    void awkwardNames()
    {
        QFETCH(QString, name);
        const QString path = write(name, "payload");
        const DeletionReport report = DeletionService::moveToTrash({item(path)});
        QVERIFY2(report.failed.isEmpty(), qPrintable(failures(report)));
        expectTrashed(path, "payload");
    }

    void sameNameOverwritesNothing()
    {
        // Two same-named items in one run, then the name again in a later run.
        const QString first = write(QStringLiteral("A/com.example.plist"), "first");
        const QString second = write(QStringLiteral("B/com.example.plist"), "second");
        QCOMPARE(DeletionService::moveToTrash({item(first), item(second)}).deleted.size(), 2);
        write(QStringLiteral("A/com.example.plist"), "third");
        QCOMPARE(DeletionService::moveToTrash({item(first)}).deleted.size(), 1);
        QStringList restored;
        for (const Trashed &entry : trashedIn(homeTrash()))
            restored.append(NativePath::decode(entry.originalPath) + QLatin1Char('=')
                            + QString::fromUtf8(readBytes(homeTrash() + QStringLiteral("/files/") + entry.name)));
        restored.sort();
        QCOMPARE(restored, (QStringList{first + QStringLiteral("=first"), first + QStringLiteral("=third"),
                                        second + QStringLiteral("=second")}));
    }

    // GIO keeps a mount's items in the mount's own .Trash-$UID, and refuses file systems it counts as
    // system-internal (tmpfs): then the item must stay where it was, with the reason reported.
    void otherFileSystem_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<bool>("trashable");
        QTest::newRow("ramfs") << QStringLiteral("ramfs") << true;
        QTest::newRow("tmpfs") << QStringLiteral("tmpfs") << false;
    }

    void otherFileSystem()
    {
        QFETCH(QString, type);
        QFETCH(bool, trashable);
        if (!runningAsRoot())
            QSKIP("mounting a file system needs root");
        const QString mount = m_root + QStringLiteral("/mnt");
        QVERIFY(QDir().mkpath(mount));
        const Run mounted = runProgram(QStringLiteral("mount"), {"-t", type, type, mount});
        if (mounted.exitCode != 0)
            QSKIP(qPrintable(QStringLiteral("cannot mount %1 here: %2").arg(type, QString::fromLocal8Bit(mounted.err))));
        const QString path = mount + QStringLiteral("/Caches/blob");
        writeFile(path, "elsewhere");

        const DeletionReport report = DeletionService::moveToTrash({item(path)});
        const QString mountTrash = mount + QStringLiteral("/.Trash-%1").arg(::geteuid());
        // A mount's own Trash records the path relative to the mount.
        const QByteArray trashed = readBytes(trashedCopy(mountTrash, QStringLiteral("Caches/blob")));
        const QByteArray inPlace = readBytes(path);
        const bool homeTrashUntouched = trashedIn(homeTrash()).isEmpty();
        QCOMPARE(runProgram(QStringLiteral("umount"), {mount}).exitCode, 0);

        QVERIFY(homeTrashUntouched);
        if (trashable) {
            QVERIFY2(report.failed.isEmpty(), qPrintable(failures(report)));
            QCOMPARE(trashed, QByteArray("elsewhere"));
            QCOMPARE(inPlace, QByteArray("<unreadable>"));
        } else {
            QCOMPARE(report.failed.size(), 1);
            QVERIFY(!report.failed.first().second.isEmpty());
            QCOMPARE(inPlace, QByteArray("elsewhere"));
        }
    }

    void parentNotWritableFailsInPlace()
    {
        if (!runningAsRoot() || !canRunUnprivileged())
            QSKIP("needs root and setpriv to hand the folders to another user");
        // The sandbox is private to root; the unprivileged user needs a world-readable case folder.
        QTemporaryDir shared(QStringLiteral("/tmp/kestrune-trash-XXXXXX"));
        QVERIFY(shared.isValid());
        ::chmod(QFile::encodeName(shared.path()).constData(), 0755);
        const QString home = shared.path() + QStringLiteral("/home");
        const QString locked = shared.path() + QStringLiteral("/Library/Locked");
        const QString open = shared.path() + QStringLiteral("/Library/Open");
        QVERIFY(QDir().mkpath(home) && QDir().mkpath(locked + QStringLiteral("/App")) && QDir().mkpath(open));
        writeFile(locked + QStringLiteral("/App/data"), "locked");
        writeFile(open + QStringLiteral("/App.plist"), "open");
        for (const QString &path : {home, open, open + QStringLiteral("/App.plist")})
            QVERIFY(::chown(QFile::encodeName(path).constData(), 65534, 65534) == 0);

        const Run child = runProgram(QCoreApplication::applicationFilePath(),
                                     {"--trash-as-child", home, locked + QStringLiteral("/App"), open + QStringLiteral("/App.plist")}, true);
        const QStringList lines = QString::fromUtf8(child.out).split('\n', Qt::SkipEmptyParts);
        QCOMPARE(child.exitCode, 0);
        QCOMPARE(lines.size(), 2);
        QVERIFY2(lines.at(0).startsWith(QStringLiteral("moved\t") + open), qPrintable(lines.at(0)));
        QVERIFY2(lines.at(1).startsWith(QStringLiteral("failed\t") + locked + QStringLiteral("/App\t")), qPrintable(lines.at(1)));
        QVERIFY2(lines.at(1).contains(QStringLiteral("Permission denied")), qPrintable(lines.at(1)));

        QCOMPARE(readBytes(locked + QStringLiteral("/App/data")), QByteArray("locked"));
        const QString childTrash = home + QStringLiteral("/data/Trash");
        const QList<Trashed> trashed = trashedIn(childTrash);
        QCOMPARE(trashed.size(), 1);
        QCOMPARE(trashed.first().originalPath, NativePath::encode(open + QStringLiteral("/App.plist")));
        QCOMPARE(readBytes(childTrash + QStringLiteral("/files/") + trashed.first().name), QByteArray("open"));
    }
};

// Run under setpriv by parentNotWritableFailsInPlace: trashes the paths as an unprivileged user and
// prints one line per item.
static int trashAsChild(int argc, char *argv[])
{
    const QByteArray home = argv[2];
    qputenv("HOME", home);
    qputenv("XDG_DATA_HOME", home + "/data");
    QList<LeftoverItem> items;
    for (int i = 3; i < argc; ++i)
        items.append(LeftoverItem::at(NativePath::decode(QByteArray(argv[i])), LeftoverCategory::other, 0));
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
