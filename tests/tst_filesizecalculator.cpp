// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "platform/FileSystem.h"
#include "platform/NativePath.h"
#include "services/FileSizeCalculator.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using TestSupport::makeFolder;
using TestSupport::makeSymlink;
using TestSupport::writeFile;

class FileSizeCalculatorTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_base;

private Q_SLOTS:
    void init()
    {
        TestSupport::sweepOnExit(m_dir.path());
        m_base = TestSupport::caseFolder(m_dir);
        makeFolder(m_base);
    }

    void singleItems()
    {
        QCOMPARE(FileSizeCalculator::itemSize(m_base + QStringLiteral("/missing")), 0);
        writeFile(m_base + QStringLiteral("/file"), QByteArray(1234, 'x'));
        QCOMPARE(FileSizeCalculator::itemSize(m_base + QStringLiteral("/file")), 1234);
        // Not a folder: nothing to walk.
        QCOMPARE(FileSizeCalculator::directorySize(m_base + QStringLiteral("/file")), 0);

        // A sparse file counts its full logical length, not the few blocks it occupies.
        writeFile(m_base + QStringLiteral("/sparse"));
        QVERIFY(QFile::resize(m_base + QStringLiteral("/sparse"), 50'000'000));
        QCOMPARE(FileSizeCalculator::itemSize(m_base + QStringLiteral("/sparse")), 50'000'000);

        // Links handed over directly count as themselves, as inside a folder: nothing, whatever they
        // point to, since only the link moves. A pipe reports no bytes and must not block the walk.
        makeSymlink(QStringLiteral("file"), m_base + QStringLiteral("/to-file"));
        makeSymlink(QStringLiteral("loop"), m_base + QStringLiteral("/loop"));
        QCOMPARE(::mkfifo(NativePath::encode(m_base + QStringLiteral("/pipe")).constData(), 0644), 0);
        QCOMPARE(FileSizeCalculator::itemSize(m_base + QStringLiteral("/to-file")), 0);
        QCOMPARE(FileSizeCalculator::itemSize(m_base + QStringLiteral("/loop")), 0);
        QCOMPARE(FileSizeCalculator::itemSize(m_base + QStringLiteral("/pipe")), 0);
    }

    void folderContents()
    {
        const QString tree = m_base + QStringLiteral("/tree");
        writeFile(tree + QStringLiteral("/onlyhidden/.b/c"), QByteArray(10, 'a'));
        writeFile(tree + QStringLiteral("/Café/日本語.txt"), QByteArray(100, 'u'));
        writeFile(tree + QStringLiteral("/Cafe\u0301/nfd"), QByteArray(3, 'u'));
        // A name that is not UTF-8 (a Latin-1 é) is still found and measured.
        writeFile(tree + QStringLiteral("/raw/") + NativePath::decode(QByteArray("caf\xe9")), QByteArray(7, 'r'));
        writeFile(tree + QStringLiteral("/hard-a"), QByteArray(1000, 'h'));
        QCOMPARE(::link(NativePath::encode(tree + QStringLiteral("/hard-a")).constData(), NativePath::encode(tree + QStringLiteral("/hard-b")).constData()), 0);
        // Links are counted but never followed, wherever they point, so loops cannot trap the walk.
        makeSymlink(QStringLiteral("Café"), tree + QStringLiteral("/link-to-folder"));
        makeSymlink(QStringLiteral(".."), tree + QStringLiteral("/link-up"));
        makeSymlink(QStringLiteral("missing"), tree + QStringLiteral("/link-dangling"));
        // Each path of a hard-linked file counts, as a per-path listing sees it.
        QCOMPARE(FileSizeCalculator::itemSize(tree), 100 + 3 + 7 + 1000 + 1000);

        // A link to a folder given as the start is not followed either.
        QCOMPARE(FileSizeCalculator::itemSize(tree + QStringLiteral("/link-to-folder")), 0);
        QCOMPARE(FileSizeCalculator::directorySize(tree + QStringLiteral("/link-to-folder")), 0);

        // Packages below the start are not entered, but the start is, package or not.
        const QString app = tree + QStringLiteral("/Zeta.app");
        writeFile(app + QStringLiteral("/Contents/MacOS/Zeta"), QByteArray(500, 'z'));
        writeFile(app + QStringLiteral("/Contents/PlugIns/Share.APPEX/x"), QByteArray(900, 'h'));
        writeFile(app + QStringLiteral("/Contents/Frameworks/Kit.framework/Versions/A/Kit"), QByteArray(40, 'k'));
        makeSymlink(QStringLiteral("Versions/Current/Kit"), app + QStringLiteral("/Contents/Frameworks/Kit.framework/Kit"));
        // Only folders are packages: a plain file with a package name is counted.
        writeFile(app + QStringLiteral("/Contents/Resources/notes.app"), QByteArray(11, 'n'));
        QCOMPARE(FileSizeCalculator::itemSize(app), 500 + 40 + 11);
        QCOMPARE(FileSizeCalculator::directorySize(app + QStringLiteral("/Contents/PlugIns/Share.APPEX")), 900);
    }

    // Hidden entries never count; distinct sizes tell which entries did, in readdir order, so that the
    // cut falls on the same entry every run.
    void entryLimit()
    {
        const QString folder = m_base + QStringLiteral("/flat");
        for (int k = 0; k < 600; ++k)
            writeFile(folder + QStringLiteral("/f%1").arg(k), QByteArray(k + 1, 'x'));
        for (int k = 0; k < 5; ++k)
            writeFile(folder + QStringLiteral("/.hidden%1").arg(k), QByteArray(1000, 'x'));
        // Unsorted is readdir's own order.
        const QFileInfoList entries = QDir(folder).entryInfoList(QDir::Files, QDir::Unsorted);
        QCOMPARE(entries.size(), 600);
        const auto first = [&](int count) {
            qint64 total = 0;
            for (int k = 0; k < count; ++k)
                total += entries.at(k).size();
            return total;
        };
        for (const int limit : {-3, 0, 17, 599, 600})
            QCOMPARE(FileSizeCalculator::directorySize(folder, limit), first(std::max(limit, 0)));
        QCOMPARE(FileSizeCalculator::quickItemSize(folder), first(FileSizeCalculator::quickEntryLimit));
    }

    // Far deeper than the descriptors a process may hold open: the walk still reaches the bottom, in the
    // same order.
    void deepTree()
    {
        const QString tree = m_base + QStringLiteral("/deep");
        constexpr int depth = 1500;
        QString folder = tree;
        for (int level = 0; level < depth; ++level, folder += QStringLiteral("/d"))
            writeFile(folder + QStringLiteral("/f"), QByteArray(level + 1, 'x'));
        // With the descriptor limit of a Mac.
        rlimit saved;
        QCOMPARE(::getrlimit(RLIMIT_NOFILE, &saved), 0);
        const rlimit small{256, saved.rlim_max};
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &small), 0);
        const qint64 limited = FileSizeCalculator::directorySize(tree, 1'000'000);
        ::setrlimit(RLIMIT_NOFILE, &saved);
        QCOMPARE(limited, qint64(depth) * (depth + 1) / 2);
    }

    // A bind mount that shows a folder inside itself: counted once as an entry, never entered.
    void bindMountLoop()
    {
        const QString unshare = QStandardPaths::findExecutable(QStringLiteral("unshare"));
        if (!TestSupport::runningAsRoot() || unshare.isEmpty())
            QSKIP("needs root and unshare to bind-mount a loop in a private mount namespace");
        const QString tree = m_base + QStringLiteral("/loop");
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
        if (TestSupport::runningAsRoot() && !TestSupport::canRunUnprivileged())
            QSKIP("running as root without setpriv: cannot drop to an unprivileged user");
        TestSupport::SharedTemporaryDir tree;
        writeFile(tree.filePath(QStringLiteral("a-visible")), QByteArray(10, 'v'));
        writeFile(tree.filePath(QStringLiteral("locked/inside")), QByteArray(100, 'l'));
        writeFile(tree.filePath(QStringLiteral("listonly/inside")), QByteArray(1000, 'l'));
        writeFile(tree.filePath(QStringLiteral("z-visible")), QByteArray(20, 'v'));
        // Readable but not searchable: the names are listed, their sizes cannot be read.
        QCOMPARE(::chmod(QFile::encodeName(tree.filePath(QStringLiteral("locked"))).constData(), 0), 0);
        QCOMPARE(::chmod(QFile::encodeName(tree.filePath(QStringLiteral("listonly"))).constData(), 0444), 0);
        const TestSupport::Run run = TestSupport::runCli({QStringLiteral("size"), tree.path()}, true);
        ::chmod(QFile::encodeName(tree.filePath(QStringLiteral("locked"))).constData(), 0755);
        ::chmod(QFile::encodeName(tree.filePath(QStringLiteral("listonly"))).constData(), 0755);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out.trimmed(), QByteArray("30"));
    }
};

QTEST_GUILESS_MAIN(FileSizeCalculatorTest)
#include "tst_filesizecalculator.moc"
