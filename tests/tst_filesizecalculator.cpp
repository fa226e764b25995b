// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "platform/FileSystem.h"
#include "platform/NativePath.h"
#include "services/FileSizeCalculator.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <QScopeGuard>

#include <fcntl.h>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using TestSupport::makeFolder;
using TestSupport::makeSymlink;
using TestSupport::writeFile;

namespace {

// Names as the walk sees them: every visible entry of a folder in readdir order.
QList<FileSystem::DirectoryEntry> visibleEntries(const QString &folder)
{
    return FileSystem::contentsOfDirectory(folder, true).value_or(QList<FileSystem::DirectoryEntry>());
}

// An independent, path-based model of the walk used as the oracle for randomly generated trees.
void modelWalk(const QString &folder, qint64 limit, qint64 &count, qint64 &total, bool &stopped)
{
    for (const FileSystem::DirectoryEntry &entry : visibleEntries(folder)) {
        if (stopped || count + 1 > limit) {
            stopped = true;
            return;
        }
        ++count;
        struct stat st;
        if (::lstat(NativePath::encode(entry.path).constData(), &st) != 0)
            continue;
        if (S_ISREG(st.st_mode))
            total += st.st_size;
        else if (S_ISDIR(st.st_mode) && !FileSystem::isPackageExtension(QStringView(FileSystem::pathExtension(entry.name))))
            modelWalk(entry.path, limit, count, total, stopped);
    }
}

qint64 modelSize(const QString &folder, qint64 limit)
{
    qint64 count = 0, total = 0;
    bool stopped = false;
    modelWalk(folder, limit, count, total, stopped);
    return total;
}

} // namespace

class FileSizeCalculatorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        TestSupport::sweepOnExit(m_folder->path());
    }

    void singleItems()
    {
        const QString base = m_folder->path();
        QCOMPARE(FileSizeCalculator::itemSize(base + QStringLiteral("/missing")), 0);
        QCOMPARE(FileSizeCalculator::directorySize(base + QStringLiteral("/missing")), 0);

        writeFile(base + QStringLiteral("/file"), QByteArray(1234, 'x'));
        QCOMPARE(FileSizeCalculator::itemSize(base + QStringLiteral("/file")), 1234);
        // Not a folder: nothing to walk.
        QCOMPARE(FileSizeCalculator::directorySize(base + QStringLiteral("/file")), 0);

        // A sparse file counts its full logical length, not the few blocks it occupies.
        const QString sparse = base + QStringLiteral("/sparse");
        const int fd = ::open(NativePath::encode(sparse).constData(), O_CREAT | O_WRONLY, 0644);
        QVERIFY(fd >= 0);
        QCOMPARE(::ftruncate(fd, 50'000'000), 0);
        ::close(fd);
        QCOMPARE(FileSizeCalculator::itemSize(sparse), 50'000'000);

        // Links handed over directly are measured as what they point to; broken ones as nothing.
        makeSymlink(QStringLiteral("file"), base + QStringLiteral("/to-file"));
        makeSymlink(QStringLiteral("nowhere"), base + QStringLiteral("/dangling"));
        makeSymlink(QStringLiteral("loop-b"), base + QStringLiteral("/loop-a"));
        makeSymlink(QStringLiteral("loop-a"), base + QStringLiteral("/loop-b"));
        QCOMPARE(FileSizeCalculator::itemSize(base + QStringLiteral("/to-file")), 1234);
        QCOMPARE(FileSizeCalculator::itemSize(base + QStringLiteral("/dangling")), 0);
        QCOMPARE(FileSizeCalculator::itemSize(base + QStringLiteral("/loop-a")), 0);

        // A pipe reports no bytes.
        QCOMPARE(::mkfifo(NativePath::encode(base + QStringLiteral("/pipe")).constData(), 0644), 0);
        QCOMPARE(FileSizeCalculator::itemSize(base + QStringLiteral("/pipe")), 0);
    }

    void folderContents()
    {
        const QString tree = m_folder->path() + QStringLiteral("/tree");
        makeFolder(tree + QStringLiteral("/empty"));
        QCOMPARE(FileSizeCalculator::itemSize(tree + QStringLiteral("/empty")), 0);

        writeFile(tree + QStringLiteral("/onlyhidden/.a"), QByteArray(10, 'a'));
        writeFile(tree + QStringLiteral("/onlyhidden/.b/c"), QByteArray(10, 'a'));
        QCOMPARE(FileSizeCalculator::itemSize(tree + QStringLiteral("/onlyhidden")), 0);

        writeFile(tree + QStringLiteral("/Café/日本語.txt"), QByteArray(100, 'u'));
        writeFile(tree + QStringLiteral("/Cafe\u0301/nfd"), QByteArray(3, 'u'));
        // A name that is not UTF-8 (a Latin-1 é) is still found and measured.
        writeFile(tree + QStringLiteral("/raw/") + NativePath::decode(QByteArray("caf\xe9")), QByteArray(7, 'r'));
        writeFile(tree + QStringLiteral("/hard-a"), QByteArray(1000, 'h'));
        QCOMPARE(::link(NativePath::encode(tree + QStringLiteral("/hard-a")).constData(),
                        NativePath::encode(tree + QStringLiteral("/hard-b")).constData()),
                 0);
        // Links are counted but never followed, wherever they point, so loops cannot trap the walk.
        makeSymlink(QStringLiteral("hard-a"), tree + QStringLiteral("/link-to-file"));
        makeSymlink(QStringLiteral("Café"), tree + QStringLiteral("/link-to-folder"));
        makeSymlink(QStringLiteral(".."), tree + QStringLiteral("/link-up"));
        makeSymlink(QStringLiteral("missing"), tree + QStringLiteral("/link-dangling"));
        // Each path of a hard-linked file counts, as a per-path listing sees it.
        const qint64 expected = 100 + 3 + 7 + 1000 + 1000;
        QCOMPARE(FileSizeCalculator::directorySize(tree), expected);
        QCOMPARE(FileSizeCalculator::itemSize(tree), expected);

        // A link to a folder given as the start is followed once: it names the folder to measure.
        QCOMPARE(FileSizeCalculator::itemSize(tree + QStringLiteral("/link-to-folder")), 100);
    }

    void packages()
    {
        const QString app = m_folder->path() + QStringLiteral("/Zeta.app");
        writeFile(app + QStringLiteral("/Contents/MacOS/Zeta"), QByteArray(500, 'z'));
        writeFile(app + QStringLiteral("/Contents/Resources/.DS_Store"), QByteArray(6148, 'd'));
        writeFile(app + QStringLiteral("/Contents/Library/LoginItems/Helper.app/Contents/MacOS/Helper"), QByteArray(900, 'h'));
        writeFile(app + QStringLiteral("/Contents/PlugIns/Share.APPEX/x"), QByteArray(900, 'h'));
        writeFile(app + QStringLiteral("/Contents/PlugIns/Pane.prefpane/x"), QByteArray(900, 'h'));
        writeFile(app + QStringLiteral("/Contents/Frameworks/Kit.framework/Versions/A/Kit"), QByteArray(40, 'k'));
        makeSymlink(QStringLiteral("A"), app + QStringLiteral("/Contents/Frameworks/Kit.framework/Versions/Current"));
        makeSymlink(QStringLiteral("Versions/Current/Kit"), app + QStringLiteral("/Contents/Frameworks/Kit.framework/Kit"));
        // Only folders are packages: a plain file with a package name is counted.
        writeFile(app + QStringLiteral("/Contents/Resources/notes.app"), QByteArray(11, 'n'));
        // The starting folder is entered even though it is a package itself.
        QCOMPARE(FileSizeCalculator::itemSize(app), 500 + 40 + 11);
        QCOMPARE(FileSizeCalculator::directorySize(app + QStringLiteral("/Contents/PlugIns/Share.APPEX")), 900);
    }

    void entryLimit_data()
    {
        QTest::addColumn<int>("files");
        QTest::addColumn<qint64>("limit");
        QTest::addColumn<int>("counted");
        QTest::newRow("exactly the limit") << 10 << qint64(10) << 10;
        QTest::newRow("one more than the limit") << 11 << qint64(10) << 10;
        QTest::newRow("negative limit") << 5 << qint64(-3) << 0;
        QTest::newRow("quick limit on 600") << 600 << FileSizeCalculator::quickEntryLimit << 500;
    }
    void entryLimit()
    {
        QFETCH(int, files);
        QFETCH(qint64, limit);
        QFETCH(int, counted);
        const QString folder = m_folder->path() + QStringLiteral("/flat");
        // Distinct sizes, so that the total tells exactly which entries were counted.
        for (int k = 0; k < files; ++k)
            writeFile(folder + QStringLiteral("/f%1").arg(k), QByteArray(k + 1, 'x'));
        // Hidden entries never count towards the limit.
        for (int k = 0; k < 5; ++k)
            writeFile(folder + QStringLiteral("/.hidden%1").arg(k), QByteArray(1000, 'x'));
        const QList<FileSystem::DirectoryEntry> order = visibleEntries(folder);
        QCOMPARE(order.size(), files);
        qint64 expected = 0;
        for (int k = 0; k < counted; ++k)
            expected += FileSystem::fileSize(order.at(k).path).value_or(-1);
        QCOMPARE(FileSizeCalculator::directorySize(folder, limit), expected);
        if (limit == FileSizeCalculator::quickEntryLimit)
            QCOMPARE(FileSizeCalculator::quickItemSize(folder), expected);
    }

    // Folders, links and packages count as one entry each; the cut falls on the same entry every run.
    void entryLimitOnRandomTrees()
    {
        QRandomGenerator random(7);
        const QString root = m_folder->path() + QStringLiteral("/random");
        QStringList folders{root};
        makeFolder(root);
        for (int k = 0; k < 400; ++k) {
            const QString parent = folders.at(random.bounded(folders.size()));
            const QString name = QStringLiteral("e%1").arg(k);
            switch (random.bounded(6)) {
            case 0: makeFolder(parent + QLatin1Char('/') + name); folders.append(parent + QLatin1Char('/') + name); break;
            case 1: writeFile(parent + QLatin1Char('/') + name + QStringLiteral(".app/Contents/x"), QByteArray(50, 'p')); break;
            case 2: makeSymlink(QStringLiteral(".."), parent + QLatin1Char('/') + name); break;
            case 3: writeFile(parent + QStringLiteral("/.") + name, QByteArray(70, 'h')); break;
            default: writeFile(parent + QLatin1Char('/') + name, QByteArray(random.bounded(1, 5000), 'f')); break;
            }
        }
        for (qint64 limit : {qint64(0), qint64(1), qint64(17), qint64(100), qint64(233), qint64(299), qint64(100000)})
            QCOMPARE(FileSizeCalculator::directorySize(root, limit), modelSize(root, limit));
    }

    // Far deeper than the descriptors a process may hold open: the walk still reaches the bottom, in the
    // same order, with the entry limit cutting where it would in a shallow tree.
    void deepTree()
    {
        const QString tree = m_folder->path() + QStringLiteral("/deep");
        makeFolder(tree);
        int fd = ::open(NativePath::encode(tree).constData(), O_RDONLY | O_DIRECTORY);
        QVERIFY(fd >= 0);
        constexpr int depth = 1500;
        for (int level = 0; level < depth; ++level) {
            const int file = ::openat(fd, "f", O_CREAT | O_WRONLY, 0644);
            QVERIFY(file >= 0);
            QCOMPARE(::ftruncate(file, level + 1), 0);
            ::close(file);
            QCOMPARE(::mkdirat(fd, "d", 0755), 0);
            const int next = ::openat(fd, "d", O_RDONLY | O_DIRECTORY);
            ::close(fd);
            fd = next;
            QVERIFY(fd >= 0);
        }
        ::close(fd);
        const qint64 all = qint64(depth) * (depth + 1) / 2;
        QCOMPARE(FileSizeCalculator::directorySize(tree, 1'000'000), all);
        QCOMPARE(FileSizeCalculator::directorySize(tree, 2 * depth), all);
        // The cut falls inside the deep part as it would anywhere else.
        QCOMPARE(FileSizeCalculator::directorySize(tree, 2 * depth - 1), modelSize(tree, 2 * depth - 1));
        // With the descriptor limit of a Mac.
        struct rlimit saved;
        QCOMPARE(::getrlimit(RLIMIT_NOFILE, &saved), 0);
        struct rlimit small = saved;
        small.rlim_cur = 256;
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &small), 0);
        const qint64 limited = FileSizeCalculator::directorySize(tree, 1'000'000);
        ::setrlimit(RLIMIT_NOFILE, &saved);
        QCOMPARE(limited, all);
    }

    // A bind mount that shows a folder inside itself: counted once as an entry, never entered.
    void bindMountLoop()
    {
        const QString unshare = QStandardPaths::findExecutable(QStringLiteral("unshare"));
        if (!TestSupport::runningAsRoot() || unshare.isEmpty())
            QSKIP("needs root and unshare to bind-mount a loop in a private mount namespace");
        const QString tree = m_folder->path() + QStringLiteral("/loop");
        writeFile(tree + QStringLiteral("/file"), QByteArray(25, 'f'));
        makeFolder(tree + QStringLiteral("/inner/again"));
        // The mount lives only in the child's own namespace and vanishes with it.
        QProcess child;
        child.start(unshare, {QStringLiteral("--mount"), QStringLiteral("--propagation"), QStringLiteral("private"), QStringLiteral("sh"), QStringLiteral("-c"),
                              QStringLiteral("mount --bind \"$1\" \"$1/inner/again\" && exec \"$2\" size \"$1\" --limit 1000000"),
                              QStringLiteral("sh"), tree, QStringLiteral(KESTRUNE_BINARY_DIR "/src/cli/kestrune-cli")});
        QVERIFY(child.waitForFinished(60000));
        if (child.exitCode() != 0)
            QSKIP(qPrintable(QStringLiteral("cannot bind-mount here: ") + QString::fromLocal8Bit(child.readAllStandardError())));
        QCOMPARE(child.readAllStandardOutput().trimmed(), QByteArray("25"));
    }

    // Unreadable folders are passed over (still counted as an entry); the walk goes on beside them.
    void unreadableFolders()
    {
        const QString tree = m_folder->path() + QStringLiteral("/perm");
        writeFile(tree + QStringLiteral("/a-visible"), QByteArray(10, 'v'));
        writeFile(tree + QStringLiteral("/locked/inside"), QByteArray(100, 'l'));
        writeFile(tree + QStringLiteral("/listonly/inside"), QByteArray(1000, 'l'));
        writeFile(tree + QStringLiteral("/z-visible"), QByteArray(20, 'v'));
        QCOMPARE(::chmod(NativePath::encode(tree + QStringLiteral("/locked")).constData(), 0), 0);
        // Readable but not searchable: the names are listed, their sizes cannot be read.
        QCOMPARE(::chmod(NativePath::encode(tree + QStringLiteral("/listonly")).constData(), 0444), 0);
        auto cleanup = qScopeGuard([&] {
            ::chmod(NativePath::encode(tree + QStringLiteral("/locked")).constData(), 0755);
            ::chmod(NativePath::encode(tree + QStringLiteral("/listonly")).constData(), 0755);
        });

        if (TestSupport::runningAsRoot()) {
            if (!TestSupport::canRunUnprivileged())
                QSKIP("running as root without setpriv: cannot drop to an unprivileged user");
            // The unprivileged user must be able to reach the tree.
            for (QString folder = tree; folder.startsWith(m_folder->path()); folder = FileSystem::deletingLastPathComponent(folder))
                QCOMPARE(::chmod(NativePath::encode(folder).constData(), 0755), 0);
        }
        const auto sizeOf = [&](qint64 limit) {
            const TestSupport::Run run = TestSupport::runCli({QStringLiteral("size"), tree, QStringLiteral("--limit"), QString::number(limit)}, true);
            return run.exitCode == 0 ? run.out.trimmed().toLongLong() : -1;
        };
        QCOMPARE(sizeOf(100), 30);
        // Five entries in all: the locked folder counts one, the list-only folder two (itself and its name).
        QCOMPARE(sizeOf(5), 30);
        const QString last = visibleEntries(tree).constLast().name;
        const qint64 lastBytes = last == QLatin1String("a-visible") ? 10 : last == QLatin1String("z-visible") ? 20 : 0;
        QCOMPARE(sizeOf(4), 30 - lastBytes);
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(FileSizeCalculatorTest)
#include "tst_filesizecalculator.moc"
