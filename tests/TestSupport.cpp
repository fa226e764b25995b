// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Sample Macs and Trashes hold names that are not UTF-8, which QTemporaryDir cannot delete; what it leaves
// behind is removed byte for byte when the test process ends, with the folders around it that this
// empties, up to the system's temporary folder.
struct SampleMacSweeper {
    std::vector<std::filesystem::path> folders;
    std::filesystem::path temporaryRoot;
    ~SampleMacSweeper()
    {
        for (const auto &folder : folders) {
            std::error_code ignored;
            std::filesystem::remove_all(folder, ignored);
            for (auto parent = folder.parent_path(); !ignored && parent.has_relative_path() && parent != temporaryRoot; parent = parent.parent_path()) {
                if (!std::filesystem::remove(parent, ignored))
                    break;
            }
        }
    }
} sweeper;

} // namespace

namespace TestSupport {

void writeFile(const QString &path, const QByteArray &contents)
{
    // Byte for byte, so that names that are not UTF-8 reach the disk as they are (QFile would not).
    const std::filesystem::path native = NativePath::encode(path).toStdString();
    std::error_code error;
    std::filesystem::create_directories(native.parent_path(), error);
    std::ofstream out(native, std::ios::binary | std::ios::trunc);
    QVERIFY2(out.write(contents.constData(), contents.size()).flush(), qPrintable(path));
}

void makeFolder(const QString &path) { QVERIFY2(QDir().mkpath(path), qPrintable(path)); }

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
    sweeper.temporaryRoot = NativePath::encode(QDir::tempPath()).toStdString();
    sweeper.folders.emplace_back(NativePath::encode(QDir(folder).absolutePath()).toStdString());
}

bool generateSampleMac(const QString &folder, int seed, const QString &scale, QString *log)
{
    sweepOnExit(folder);
    QProcess generator;
    generator.setProcessChannelMode(QProcess::MergedChannels);
    generator.start(QStringLiteral("python3"), {QStringLiteral(KESTRUNE_SAMPLE_MAC_TOOL), QStringLiteral("--out"), folder, QStringLiteral("--seed"),
                                                QString::number(seed), QStringLiteral("--scale"), scale});
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

bool runningAsRoot() { return ::geteuid() == 0; }

bool canRunUnprivileged() { return !runningAsRoot() || !QStandardPaths::findExecutable(QStringLiteral("setpriv")).isEmpty(); }

Run runProgram(const QString &program, const QStringList &arguments, bool unprivileged)
{
    QProcess process;
    const bool drop = unprivileged && runningAsRoot();
    process.start(drop ? QStringLiteral("setpriv") : program,
                  drop ? QStringList{QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"), QStringLiteral("--clear-groups"), program} + arguments
                       : arguments);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return Run();
    return Run{process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

Run runCli(const QStringList &arguments, bool unprivileged) { return runProgram(QStringLiteral(KESTRUNE_BINARY_DIR "/src/cli/kestrune-cli"), arguments, unprivileged); }

Run runCliOn(const QString &root, const QString &home, const QStringList &arguments, bool unprivileged)
{
    return runCli(QStringList{QStringLiteral("--root"), root, QStringLiteral("--home"), home} + arguments, unprivileged);
}

QStringList jsonPaths(const QJsonValue &items)
{
    QStringList paths;
    for (const QJsonValue &entry : items.toArray())
        paths.append((entry[QStringLiteral("item")].isObject() ? entry[QStringLiteral("item")] : entry)[QStringLiteral("path")].toString());
    return paths;
}

QStringList pathsOf(const QList<LeftoverItem> &items)
{
    QStringList paths;
    for (const LeftoverItem &item : items)
        paths.append(item.path());
    return paths;
}

SharedTemporaryDir::SharedTemporaryDir() : QTemporaryDir(QStringLiteral("/tmp/kestrune-XXXXXX"))
{
    ::chmod(QFile::encodeName(path()).constData(), 0755);
}

Run runChild(const QStringList &arguments, bool unprivileged)
{
    return runProgram(QCoreApplication::applicationFilePath(), QStringList{QStringLiteral("--child")} + arguments, unprivileged);
}

QStringList childArguments(int argc, char *argv[])
{
    QStringList arguments;
    for (int k = 2; k < argc; ++k)
        arguments.append(NativePath::decode(QByteArray(argv[k])));
    return arguments;
}

QByteArray readBytes(const QString &path)
{
    std::ifstream in(NativePath::encode(path).toStdString(), std::ios::binary);
    return in ? QByteArray::fromStdString(std::string(std::istreambuf_iterator<char>(in), {})) : QByteArray("<unreadable>");
}

qsizetype trashedCount()
{
    return FileSystem::contentsOfDirectory(homeTrash() + QStringLiteral("/info"), false).value_or(QList<FileSystem::DirectoryEntry>()).size();
}

QString homeTrash() { return qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/Trash"); }

int execWithPrivateTrash(QObject *test, int argc, char *argv[])
{
    QTemporaryDir sandbox;
    if (!sandbox.isValid())
        return 1;
    qputenv("HOME", QFile::encodeName(sandbox.path() + QStringLiteral("/home")));
    qputenv("XDG_DATA_HOME", QFile::encodeName(sandbox.path() + QStringLiteral("/data")));
    // Foundation takes the user's home, and with it the Trash, from the account, not from HOME; this is
    // the variable it honours instead.
    qputenv("CFFIXED_USER_HOME", QFile::encodeName(sandbox.path() + QStringLiteral("/home")));
    QDir().mkpath(sandbox.path() + QStringLiteral("/home"));
    // Trashed names need not be UTF-8, which QTemporaryDir cannot delete.
    sweepOnExit(sandbox.path());
    return QTest::qExec(test, argc, argv);
}

} // namespace TestSupport
