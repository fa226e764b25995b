// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "platform/FileSystemLayout.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <unistd.h>

namespace TestSupport {

void writeFile(const QString &path, const QByteArray &contents)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    QCOMPARE(file.write(contents), contents.size());
}

void makeFolder(const QString &path)
{
    QVERIFY2(QDir().mkpath(path), qPrintable(path));
}

void makeSymlink(const QString &target, const QString &linkPath)
{
    QDir().mkpath(QFileInfo(linkPath).absolutePath());
    QVERIFY2(::symlink(NativePath::encode(target).constData(), NativePath::encode(linkPath).constData()) == 0,
             qPrintable(linkPath));
}

bool generateSampleMac(const QString &folder, int seed, const QString &scale, QString *log)
{
    QProcess generator;
    generator.setProcessChannelMode(QProcess::MergedChannels);
    generator.start(QStringLiteral("python3"),
                    {QStringLiteral(KESTRUNE_SAMPLE_MAC_TOOL), QStringLiteral("--out"), folder,
                     QStringLiteral("--seed"), QString::number(seed), QStringLiteral("--scale"), scale});
    const bool finished = generator.waitForFinished(600000);
    if (log)
        *log = QString::fromUtf8(generator.readAll());
    return finished && generator.exitStatus() == QProcess::NormalExit && generator.exitCode() == 0;
}

void useLayout(const QString &root, const QString &home)
{
    FileSystemLayout::setRoot(root);
    FileSystemLayout::setHome(home);
}

bool runningAsRoot()
{
    return ::geteuid() == 0;
}

} // namespace TestSupport
