// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "platform/FileSystemLayout.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <filesystem>
#include <mutex>
#include <unistd.h>

namespace {

// Sample Macs hold names that are not UTF-8, which QTemporaryDir cannot delete; whatever it leaves
// behind is removed byte for byte when the test process ends.
struct SampleMacSweeper {
    std::mutex mutex;
    std::vector<std::filesystem::path> folders;
    ~SampleMacSweeper()
    {
        for (const auto &folder : folders) {
            std::error_code ignored;
            std::filesystem::remove_all(folder, ignored);
            // The temporary folder around it is left empty by QTemporaryDir's failed attempt.
            for (auto parent = folder.parent_path(); !ignored && parent.has_relative_path(); parent = parent.parent_path()) {
                if (!std::filesystem::remove(parent, ignored))
                    break;
            }
        }
    }
};

SampleMacSweeper &sweeper()
{
    static SampleMacSweeper instance;
    return instance;
}

} // namespace

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

void sweepOnExit(const QString &folder)
{
    std::lock_guard lock(sweeper().mutex);
    sweeper().folders.emplace_back(NativePath::encode(QDir(folder).absolutePath()).toStdString());
}

bool generateSampleMac(const QString &folder, int seed, const QString &scale, QString *log)
{
    sweepOnExit(folder);
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
