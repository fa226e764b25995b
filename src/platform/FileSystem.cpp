// SPDX-License-Identifier: MIT
#include "platform/FileSystem.h"
#include "platform/NativePath.h"

#include <QDir>

#include <algorithm>
#include <array>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace FileSystem {

bool exists(const QString &path)
{
    struct stat st;
    return !path.isEmpty() && ::stat(NativePath::encode(path).constData(), &st) == 0;
}

bool exists(const QString &path, bool *isDirectory)
{
    struct stat st;
    const bool found = !path.isEmpty() && ::stat(NativePath::encode(path).constData(), &st) == 0;
    if (isDirectory)
        *isDirectory = found && S_ISDIR(st.st_mode);
    return found;
}

bool isSymbolicLink(const QString &path)
{
    struct stat st;
    return ::lstat(NativePath::encode(path).constData(), &st) == 0 && S_ISLNK(st.st_mode);
}

std::optional<qint64> fileSize(const QString &path)
{
    struct stat st;
    if (::stat(NativePath::encode(path).constData(), &st) != 0)
        return std::nullopt;
    return qint64(st.st_size);
}

std::optional<QList<DirectoryEntry>> contentsOfDirectory(const QString &folder, bool skipsHiddenFiles)
{
    if (folder.isEmpty())
        return std::nullopt;
    DIR *dir = ::opendir(NativePath::encode(folder).constData());
    if (!dir)
        return std::nullopt;
    const QString prefix = folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
    QList<DirectoryEntry> entries;
    errno = 0;
    while (const dirent *entry = ::readdir(dir)) {
        const char *name = entry->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
            continue;
        if (skipsHiddenFiles && name[0] == '.')
            continue;
        const QString decoded = NativePath::decode(name, qsizetype(strlen(name)));
        entries.append({decoded, prefix + decoded, entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN});
    }
    ::closedir(dir);
    // readdir's order is the file system's own (a hash on ext4): sorted, every scan lists and orders
    // names that differ only in letter case the same way on every disk.
    std::sort(entries.begin(), entries.end(), [](const DirectoryEntry &a, const DirectoryEntry &b) { return a.name < b.name; });
    return entries;
}

std::optional<QByteArray> readFile(const QString &path, qint64 maxBytes)
{
    // Opening a pipe for reading waits for a writer, and a link can lead to one whatever a check of
    // the path said a moment before: open without waiting, then look at what was opened.
    const int fd = ::open(NativePath::encode(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0)
        return std::nullopt;
    struct stat st;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || st.st_size > maxBytes) {
        ::close(fd);
        return std::nullopt;
    }
    QByteArray data;
    data.reserve(qsizetype(st.st_size));
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t n = ::read(fd, buffer.data(), buffer.size());
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            ::close(fd);
            return std::nullopt;
        }
        if (n == 0)
            break;
        // The file may grow after fstat; the cap holds for what is actually read.
        if (data.size() + n > maxBytes) {
            ::close(fd);
            return std::nullopt;
        }
        data.append(buffer.data(), n);
    }
    ::close(fd);
    return data;
}

QString lastPathComponent(const QString &path)
{
    QStringView view(path);
    while (view.size() > 1 && view.endsWith(QLatin1Char('/')))
        view.chop(1);
    const qsizetype slash = view.lastIndexOf(QLatin1Char('/'));
    if (slash < 0 || view.size() == 1)
        return view.toString();
    return view.mid(slash + 1).toString();
}

QString deletingLastPathComponent(const QString &path)
{
    QStringView view(path);
    while (view.size() > 1 && view.endsWith(QLatin1Char('/')))
        view.chop(1);
    const qsizetype slash = view.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return QString();
    if (slash == 0)
        return QStringLiteral("/");
    return view.left(slash).toString();
}

QString pathExtension(const QString &path)
{
    const QString name = lastPathComponent(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    // A leading dot names a hidden file, not an extension.
    if (dot <= 0 || dot == name.size() - 1)
        return QString();
    return name.mid(dot + 1);
}

QString deletingPathExtension(const QString &path)
{
    const QString extension = pathExtension(path);
    if (extension.isEmpty())
        return path;
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(QLatin1Char('/')))
        trimmed.chop(1);
    return trimmed.left(trimmed.size() - extension.size() - 1);
}

QString fileNameWithoutExtension(const QString &path)
{
    return lastPathComponent(deletingPathExtension(path));
}

QString standardizedPath(const QString &path)
{
    return QDir::cleanPath(QDir::isAbsolutePath(path) ? path : QDir::current().absoluteFilePath(path));
}

namespace {

constexpr std::array<QLatin1StringView, 11> packageExtensions = {
    QLatin1StringView("app"), QLatin1StringView("appex"), QLatin1StringView("bundle"),
    QLatin1StringView("component"), QLatin1StringView("kext"), QLatin1StringView("mdimporter"),
    QLatin1StringView("plugin"), QLatin1StringView("prefPane"), QLatin1StringView("qlgenerator"),
    QLatin1StringView("saver"), QLatin1StringView("xpc")};

template<typename View>
bool matchesPackageExtension(View extension)
{
    for (const auto &package : packageExtensions) {
        if (extension.compare(package, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

} // namespace

bool isPackageExtension(QStringView extension)
{
    return matchesPackageExtension(extension);
}

bool isPackageExtension(QLatin1StringView extension)
{
    // Bytes above ASCII never match one of the ASCII extensions, whatever they decode to.
    return extension.size() <= 11 && matchesPackageExtension(extension);
}

} // namespace FileSystem
