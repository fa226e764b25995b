// SPDX-License-Identifier: MIT
#include "services/FileSizeCalculator.h"
#include "platform/FileSystem.h"
#include "platform/NativePath.h"

#include <algorithm>
#include <cstring>
#include <string>
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

// Below this many open folders the walk reads the deepest ones whole and climbs back through "..", so
// that a very deep tree needs a bounded number of descriptors (a Mac allows a process only 256).
constexpr std::size_t openFolderBudget = 64;

// Counts one visible entry of the open folder and adds a regular file's size. Returns an open descriptor
// of a folder to descend into, already pushed as the newest ancestor, or -1.
int visit(int folder, const char *name, unsigned char type, Walk &walk)
{
    if (walk.count + 1 > walk.limit) {
        walk.stopped = true;
        return -1;
    }
    ++walk.count;

    struct stat st;
    bool haveStat = false;
    if (type == DT_UNKNOWN) {
        if (::fstatat(folder, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            return -1;
        haveStat = true;
        type = S_ISREG(st.st_mode) ? DT_REG : S_ISDIR(st.st_mode) ? DT_DIR : DT_UNKNOWN;
    }
    if (type == DT_REG) {
        // A file that vanished or became something else since readdir adds nothing.
        if ((haveStat || ::fstatat(folder, name, &st, AT_SYMLINK_NOFOLLOW) == 0) && S_ISREG(st.st_mode))
            walk.total += st.st_size;
        return -1;
    }
    if (type != DT_DIR || hasPackageExtension(name))
        return -1;
    const int child = ::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (child < 0)
        return -1;
    struct stat identity;
    if (::fstat(child, &identity) != 0 || walk.isAncestor(identity)) {
        ::close(child);
        return -1;
    }
    walk.ancestors.push_back({identity.st_dev, identity.st_ino});
    return child;
}

// Closes the folder and returns its parent, reopened through ".." and checked to be the folder the walk
// came from; -1 when it is not (moved meanwhile), which ends the walk of that branch.
int reopenParent(int fd, const Walk &walk)
{
    const int parent = ::openat(fd, "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::close(fd);
    if (parent < 0)
        return -1;
    const FolderIdentity &expected = walk.ancestors[walk.ancestors.size() - 2];
    struct stat st;
    if (::fstat(parent, &st) != 0 || st.st_dev != expected.device || st.st_ino != expected.inode) {
        ::close(parent);
        return -1;
    }
    return parent;
}

// The deep walk: the folder is read whole first, then closed while each subfolder is walked. Takes
// ownership of fd and returns the reopened parent (see reopenParent).
int walkDeepFolder(int fd, Walk &walk)
{
    std::vector<std::pair<std::string, unsigned char>> entries;
    const int copy = ::dup(fd);
    if (DIR *dir = copy >= 0 ? ::fdopendir(copy) : nullptr) {
        while (const dirent *entry = ::readdir(dir)) {
            if (entry->d_name[0] != '.')
                entries.emplace_back(entry->d_name, entry->d_type);
        }
        ::closedir(dir);
    } else if (copy >= 0) {
        ::close(copy);
    }
    for (const auto &[name, type] : entries) {
        if (walk.stopped)
            break;
        const int child = visit(fd, name.c_str(), type, walk);
        if (child < 0)
            continue;
        ::close(fd);
        fd = walkDeepFolder(child, walk);
        walk.ancestors.pop_back();
        if (fd < 0)
            return -1;
    }
    return reopenParent(fd, walk);
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
        if (entry->d_name[0] == '.')
            continue; // ".", ".." and hidden names alike
        const int child = visit(::dirfd(dir), entry->d_name, entry->d_type, walk);
        if (child < 0)
            continue;
        if (walk.ancestors.size() > openFolderBudget) {
            const int back = walkDeepFolder(child, walk);
            if (back >= 0)
                ::close(back);
        } else {
            walkFolder(child, walk);
        }
        walk.ancestors.pop_back();
    }
    ::closedir(dir);
}

} // namespace

namespace FileSizeCalculator {

qint64 itemSize(const QString &path, qint64 entryLimit)
{
    // The size is what moving the item frees. A link moves alone, so it counts as a link does inside
    // a folder (nothing), not as the file or folder it points to. A device or a pipe reports a length
    // that is not bytes on disk; only regular files have a size.
    struct stat st;
    if (path.isEmpty() || ::lstat(NativePath::encode(path).constData(), &st) != 0)
        return 0;
    if (S_ISDIR(st.st_mode))
        return directorySize(path, entryLimit);
    return S_ISREG(st.st_mode) ? qint64(st.st_size) : 0;
}

qint64 directorySize(const QString &path, qint64 entryLimit)
{
    if (path.isEmpty())
        return 0;
    const int fd = ::open(NativePath::encode(path).constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
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
