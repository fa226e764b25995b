// SPDX-License-Identifier: MIT
// Whether privacy protection hides other apps' Library folders. A folder that cannot be listed is made
// with mode 000 and looked at by an unprivileged user (setpriv), since root may list everything.
#include "TestSupport.h"
#include "platform/FileSystemLayout.h"
#include "services/LibraryAccess.h"

#include <QTest>

#include <cstdio>
#include <sys/stat.h>

using namespace TestSupport;

class LibraryAccessTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
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
        QStringList arguments, locked;
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

// Run unprivileged by refusal: the answer for each home.
static int refusedAsChild(const QStringList &homes)
{
    for (const QString &home : homes) {
        FileSystemLayout::setHome(home);
        std::printf("%s\n", LibraryAccess::isRefused() ? "refused" : "readable");
    }
    return 0;
}

KESTRUNE_TEST_MAIN_WITH_CHILD(LibraryAccessTest, refusedAsChild)

#include "tst_libraryaccess.moc"
