// SPDX-License-Identifier: MIT
// Whether privacy protection hides other apps' Library folders. A folder that cannot be listed is made
// with mode 000 and looked at by an unprivileged user (setpriv), since root may list everything.
#include "TestSupport.h"
#include "platform/FileSystemLayout.h"
#include "platform/NativePath.h"
#include "services/LibraryAccess.h"

#include <QCoreApplication>
#include <QFile>
#include <QTest>

#include <cstdio>
#include <sys/stat.h>

using namespace TestSupport;

class LibraryAccessTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void refusal_data()
    {
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<QString>("locked");
        QTest::addColumn<bool>("refused");
        const QStringList both{"Library/Containers/com.other.app/Data", "Library/Group Containers/group.com.other/Library"};
        QTest::newRow("no such folders") << QStringList{"Library/Caches"} << "" << false;
        QTest::newRow("all readable") << both << "" << false;
        QTest::newRow("containers refused") << both << "Library/Containers" << true;
        QTest::newRow("one app's container refused") << both << "Library/Containers/com.other.app" << true;
        QTest::newRow("group container refused") << both << "Library/Group Containers/group.com.other" << true;
        QTest::newRow("container data refused") << both << "Library/Containers/com.other.app/Data" << true;
        QTest::newRow("deeper folders are the scanners' business") << both + QStringList{"Library/Containers/com.other.app/Data/Library"}
                                                                   << "Library/Containers/com.other.app/Data/Library" << false;
        QTest::newRow("elsewhere in Library") << both + QStringList{"Library/Caches/locked"} << "Library/Caches/locked" << false;
    }

    void refusal()
    {
        QFETCH(QStringList, folders);
        QFETCH(QString, locked);
        QFETCH(bool, refused);
        if (runningAsRoot() && !canRunUnprivileged())
            QSKIP("running as root without setpriv: every folder can be listed");
        QTemporaryDir home(QStringLiteral("/tmp/kestrune-access-XXXXXX"));
        QVERIFY(::chmod(QFile::encodeName(home.path()).constData(), 0755) == 0);
        for (const QString &folder : folders)
            makeFolder(home.path() + QLatin1Char('/') + folder);
        if (!locked.isEmpty())
            QVERIFY(::chmod(QFile::encodeName(home.path() + QLatin1Char('/') + locked).constData(), 0) == 0);

        const Run child = runProgram(QCoreApplication::applicationFilePath(), {"--refused-as-child", home.path()}, true);
        if (!locked.isEmpty())
            QVERIFY(::chmod(QFile::encodeName(home.path() + QLatin1Char('/') + locked).constData(), 0755) == 0);
        QCOMPARE(child.exitCode, 0);
        QCOMPARE(child.out.trimmed(), refused ? QByteArray("refused") : QByteArray("readable"));
    }
};

// Run unprivileged by refusal: asks about the given home.
static int refusedAsChild(char *argv[])
{
    FileSystemLayout::setHome(NativePath::decode(QByteArray(argv[2])));
    std::printf("%s\n", LibraryAccess::isRefused() ? "refused" : "readable");
    return 0;
}

int main(int argc, char *argv[])
{
    if (argc == 3 && qstrcmp(argv[1], "--refused-as-child") == 0)
        return refusedAsChild(argv);
    QCoreApplication application(argc, argv);
    LibraryAccessTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_libraryaccess.moc"
