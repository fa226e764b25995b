// SPDX-License-Identifier: MIT
#include "services/FileSizeCalculator.h"
#include "platform/FileSystem.h"
#include "platform/NativePath.h"

#include <algorithm>
#include <cstring>
#include <vector>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct FolderIdentity {
    dev_t device;
    ino_t inode;
};

struct Walk {
    qint64 limit;
    qint64 count = 0;
    qint64 total = 0;
    bool stopped = false;
    // The folders from the start down to the one being read. Links are never followed, but a bind
    // mount can still make a folder its own descendant; such a folder is counted and not entered.
    std::vector<FolderIdentity> ancestors;

    bool isAncestor(const struct stat &st) const
    {
        return std::any_of(ancestors.begin(), ancestors.end(),
                           [&](const FolderIdentity &id) { return id.device == st.st_dev && id.inode == st.st_ino; });
    }
};

bool hasPackageExtension(const char *name)
{
    const char *dot = std::strrchr(name, '.');
    if (!dot || dot == name || dot[1] == 0)
        return false;
    return FileSystem::isPackageExtension(QLatin1StringView(dot + 1));
}

// Walks the open folder; takes ownership of fd. Entries are read through openat/fstatat relative to
// their folder so that no path is ever rebuilt and a rename above the walk cannot redirect it.
void walkFolder(int fd, Walk &walk)
{
    DIR *dir = ::fdopendir(fd);
    if (!dir) {
        ::close(fd);
        return;
    }
    while (!walk.stopped) {
        const dirent *entry = ::readdir(dir);
        if (!entry)
            break;
        const char *name = entry->d_name;
        if (name[0] == '.')
            continue; // ".", ".." and hidden names alike
        if (walk.count + 1 > walk.limit) {
            walk.stopped = true;
            break;
        }
        ++walk.count;

        unsigned char type = entry->d_type;
        struct stat st;
        bool haveStat = false;
        if (type == DT_UNKNOWN) {
            if (::fstatat(::dirfd(dir), name, &st, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            haveStat = true;
            type = S_ISREG(st.st_mode) ? DT_REG : S_ISDIR(st.st_mode) ? DT_DIR : DT_UNKNOWN;
        }
        if (type == DT_REG) {
            if (haveStat || ::fstatat(::dirfd(dir), name, &st, AT_SYMLINK_NOFOLLOW) == 0) {
                // A file replaced by something else between readdir and fstatat adds nothing.
                if (S_ISREG(st.st_mode))
                    walk.total += st.st_size;
            }
        } else if (type == DT_DIR && !hasPackageExtension(name)) {
            const int child = ::openat(::dirfd(dir), name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (child < 0)
                continue;
            struct stat folder;
            if (::fstat(child, &folder) != 0 || walk.isAncestor(folder)) {
                ::close(child);
                continue;
            }
            walk.ancestors.push_back({folder.st_dev, folder.st_ino});
            walkFolder(child, walk);
            walk.ancestors.pop_back();
        }
    }
    ::closedir(dir);
}

} // namespace

namespace FileSizeCalculator {

qint64 itemSize(const QString &path, qint64 entryLimit)
{
    bool isDirectory = false;
    if (!FileSystem::exists(path, &isDirectory))
        return 0;
    if (isDirectory)
        return directorySize(path, entryLimit);
    // A device or a pipe reports a length that is not bytes on disk; only regular files have a size.
    struct stat st;
    if (::stat(NativePath::encode(path).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return 0;
    return qint64(st.st_size);
}

qint64 directorySize(const QString &path, qint64 entryLimit)
{
    if (path.isEmpty())
        return 0;
    const int fd = ::open(NativePath::encode(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return 0;
    struct stat start;
    if (::fstat(fd, &start) != 0) {
        ::close(fd);
        return 0;
    }
    Walk walk{entryLimit};
    walk.ancestors.push_back({start.st_dev, start.st_ino});
    walkFolder(fd, walk);
    return walk.total;
}

qint64 quickItemSize(const QString &path)
{
    return itemSize(path, quickEntryLimit);
}

} // namespace FileSizeCalculator
