// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <unistd.h>

namespace {

// Sample Macs hold names that are not UTF-8, which QTemporaryDir cannot delete; whatever it leaves
// behind is removed byte for byte when the test process ends.
struct SampleMacSweeper {
    std::mutex mutex;
    std::vector<std::filesystem::path> folders;
    std::filesystem::path temporaryRoot;
    ~SampleMacSweeper()
    {
        for (const auto &folder : folders) {
            std::error_code ignored;
            std::filesystem::remove_all(folder, ignored);
            // The temporary folder around it is left empty by QTemporaryDir's failed attempt; the
            // system's temporary folder itself stays even when this emptied it.
            for (auto parent = folder.parent_path();
                 !ignored && parent.has_relative_path() && parent != temporaryRoot; parent = parent.parent_path()) {
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
    // Byte for byte, so that names that are not UTF-8 reach the disk as they are (QFile would not).
    const std::filesystem::path native = NativePath::encode(path).toStdString();
    std::error_code error;
    std::filesystem::create_directories(native.parent_path(), error);
    const int fd = ::open(native.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    QVERIFY2(fd >= 0, qPrintable(path));
    const bool written = ::write(fd, contents.constData(), size_t(contents.size())) == contents.size();
    ::close(fd);
    QVERIFY2(written, qPrintable(path));
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

QByteArray infoPlist(const QList<std::pair<QString, QString>> &strings)
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>";
    for (const auto &[key, value] : strings)
        xml += "<key>" + key.toUtf8() + "</key><string>" + value.toUtf8() + "</string>";
    return xml + "</dict></plist>\n";
}

void writeApp(const QString &bundle, const QString &name, const QString &identifier, int payload)
{
    QList<std::pair<QString, QString>> strings{{QStringLiteral("CFBundleName"), name}};
    if (!identifier.isEmpty())
        strings.append({QStringLiteral("CFBundleIdentifier"), identifier});
    writeFile(bundle + QStringLiteral("/Contents/Info.plist"), infoPlist(strings));
    writeFile(bundle + QStringLiteral("/Contents/MacOS/main"), QByteArray(payload, 'x'));
}

QString caseFolder(const QTemporaryDir &dir)
{
    return dir.path() + QStringLiteral("/case-") + QString::fromLatin1(QTest::currentTestFunction()) + QLatin1Char('-')
           + QString::fromUtf8(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('_'));
}

void sweepOnExit(const QString &folder)
{
    std::lock_guard lock(sweeper().mutex);
    sweeper().temporaryRoot = NativePath::encode(QDir::tempPath()).toStdString();
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

QString useSampleLayout(const QString &root)
{
    const QString home = sampleHome(root);
    makeFolder(home + QStringLiteral("/Library"));
    useLayout(root, home);
    return home;
}

bool runningAsRoot()
{
    return ::geteuid() == 0;
}

bool canRunUnprivileged()
{
    return !runningAsRoot() || !QStandardPaths::findExecutable(QStringLiteral("setpriv")).isEmpty();
}

Run runProgram(const QString &program, const QStringList &arguments, bool unprivileged)
{
    QProcess process;
    if (unprivileged && runningAsRoot()) {
        process.start(QStringLiteral("setpriv"), QStringList{QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"),
                                                             QStringLiteral("--clear-groups"), program} + arguments);
    } else {
        process.start(program, arguments);
    }
    Run run;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

Run runCli(const QStringList &arguments, bool unprivileged)
{
    return runProgram(QStringLiteral(KESTRUNE_BINARY_DIR "/src/cli/kestrune-cli"), arguments, unprivileged);
}

QByteArray readBytes(const QString &path)
{
    const int fd = ::open(NativePath::encode(path).constData(), O_RDONLY);
    if (fd < 0)
        return "<unreadable>";
    QByteArray contents;
    char buffer[4096];
    for (ssize_t got; (got = ::read(fd, buffer, sizeof buffer)) > 0;)
        contents.append(buffer, got);
    ::close(fd);
    return contents;
}

QList<Trashed> trashedIn(const QString &trash)
{
    QList<Trashed> found;
    const auto entries = FileSystem::contentsOfDirectory(trash + QStringLiteral("/info"), false);
    for (const FileSystem::DirectoryEntry &entry : entries.value_or(QList<FileSystem::DirectoryEntry>())) {
        if (!entry.name.endsWith(QLatin1String(".trashinfo")))
            continue;
        for (const QByteArray &line : readBytes(entry.path).split('\n')) {
            if (line.startsWith("Path="))
                found.append({entry.name.chopped(10), QByteArray::fromPercentEncoding(line.mid(5))});
        }
    }
    return found;
}

QString homeTrash()
{
    return qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/Trash");
}

int execWithPrivateTrash(QObject *test, int argc, char *argv[])
{
    QTemporaryDir sandbox;
    if (!sandbox.isValid())
        return 1;
    qputenv("HOME", QFile::encodeName(sandbox.path() + QStringLiteral("/home")));
    qputenv("XDG_DATA_HOME", QFile::encodeName(sandbox.path() + QStringLiteral("/data")));
    QDir().mkpath(sandbox.path() + QStringLiteral("/home"));
    const int failed = QTest::qExec(test, argc, argv);
    // Trashed names need not be UTF-8, which QTemporaryDir cannot delete.
    std::error_code ignored;
    std::filesystem::remove_all(NativePath::encode(sandbox.path()).toStdString(), ignored);
    return failed;
}

} // namespace TestSupport
