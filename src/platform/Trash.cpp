// SPDX-License-Identifier: MIT
#include "platform/Trash.h"

#include "platform/NativePath.h"

#ifdef Q_OS_MACOS
#include "platform/MacPlatform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#else
#include "platform/FileSystem.h"

#include <QDateTime>

#include <gio/gio.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#endif

namespace Trash {

#ifdef Q_OS_MACOS

// Not QFile::moveToTrash: Qt's macOS version hands the NSError's code on as an errno value
// (moveFileToTrash in qfilesystemengine_mac.mm,
// https://github.com/qt/qtbase/blob/05fc3aef53348fb58be6308076e000825b704e58/src/corelib/io/qfilesystemengine_mac.mm),
// so a refusal reads "Unknown error: 513" instead of the system's own sentence.
bool moveToTrash(const QString &path, QString *error, QString *trashedPath)
{
    return MacPlatform::trashItem(path, error, trashedPath);
}

bool putBack(const QString &trashedPath, const QString &originalPath, QString *error)
{
    const QFileInfo original(originalPath);
    if (original.exists() || original.isSymLink()) {
        *error = QStringLiteral("Something else is at “%1” now, so the item was left in the Trash.").arg(originalPath);
        return false;
    }
    if (!QFileInfo(trashedPath).exists() && !QFileInfo(trashedPath).isSymLink()) {
        *error = QStringLiteral("The item is no longer in the Trash.");
        return false;
    }
    QDir().mkpath(original.absolutePath());
    QFile file(trashedPath);
    if (file.rename(originalPath))
        return true;
    *error = file.errorString();
    return false;
}

std::optional<QString> newestEntry(const QString &)
{
    return std::nullopt;
}

#else

namespace {

struct GFileDeleter {
    void operator()(GFile *file) const { g_object_unref(file); }
};
struct GKeyFileDeleter {
    void operator()(GKeyFile *file) const { g_key_file_free(file); }
};
using GFilePointer = std::unique_ptr<GFile, GFileDeleter>;

QByteArray parentOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.left(slash);
}

QByteArray nameOf(const QByteArray &path) { return path.mid(path.lastIndexOf('/') + 1); }

QByteArray joined(const QByteArray &folder, const QByteArray &name)
{
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

bool lstatPath(const QByteArray &path, struct stat *status) { return ::lstat(path.constData(), status) == 0; }

QString takeMessage(GError *failure, const QString &fallback)
{
    if (!failure)
        return fallback;
    const QString message = QString::fromUtf8(failure->message);
    g_error_free(failure);
    return message;
}

// The nearest folder at or above path that exists: an item that is gone still belongs to its
// folder's file system.
QByteArray existingAncestor(QByteArray path)
{
    struct stat status;
    while (path != "/" && !lstatPath(path, &status))
        path = parentOf(path);
    return path;
}

// The highest folder above start on the same device: the mount's top folder.
QByteArray mountTop(const QByteArray &start, dev_t device)
{
    QByteArray top = start;
    struct stat status;
    while (top != "/") {
        const QByteArray parent = parentOf(top);
        if (!lstatPath(parent, &status) || status.st_dev != device)
            break;
        top = parent;
    }
    return top;
}

// A Trash folder and the folder its relative records start from (empty for the home Trash, whose
// records are absolute).
struct TrashFolder {
    QByteArray folder;
    QByteArray top;
};

// Every Trash an item of this device could have gone to, as GIO picks them: the home Trash, then the
// mount's shared .Trash/$UID and its own .Trash-$UID.
QList<TrashFolder> trashesFor(const QByteArray &nearPath, dev_t device, bool sameDeviceOnly)
{
    QList<TrashFolder> trashes;
    const QByteArray uid = QByteArray::number(::getuid());
    const QByteArray top = mountTop(nearPath, device);
    const QList<TrashFolder> candidates{
        {QByteArray(g_get_user_data_dir()) + "/Trash", QByteArray()},
        {joined(top, ".Trash/" + uid), top},
        {joined(top, ".Trash-" + uid), top},
    };
    for (const TrashFolder &candidate : candidates) {
        struct stat status;
        if (lstatPath(candidate.folder + "/files", &status) && (!sameDeviceOnly || status.st_dev == device))
            trashes.append(candidate);
    }
    return trashes;
}

// The Trash folder an entry under files/ belongs to, worked out from the entry's own path.
std::optional<TrashFolder> trashOf(const QByteArray &trashedPath)
{
    const QByteArray files = parentOf(trashedPath);
    if (nameOf(files) != "files")
        return std::nullopt;
    const QByteArray folder = parentOf(files);
    const QByteArray uid = QByteArray::number(::getuid());
    if (nameOf(folder) == ".Trash-" + uid)
        return TrashFolder{folder, parentOf(folder)};
    if (nameOf(folder) == uid && nameOf(parentOf(folder)) == ".Trash")
        return TrashFolder{folder, parentOf(parentOf(folder))};
    return TrashFolder{folder, QByteArray()};
}

QByteArray infoFileOf(const TrashFolder &trash, const QByteArray &entryName)
{
    return trash.folder + "/info/" + entryName + ".trashinfo";
}

struct TrashRecord {
    QByteArray originalPath;
    QDateTime deletionDate;
};

// A .trashinfo file read with GLib's key-file parser; absent when it is missing, empty or names no path.
std::optional<TrashRecord> readRecord(const QByteArray &infoFile, const QByteArray &top)
{
    std::unique_ptr<GKeyFile, GKeyFileDeleter> keys(g_key_file_new());
    if (!g_key_file_load_from_file(keys.get(), infoFile.constData(), G_KEY_FILE_NONE, nullptr))
        return std::nullopt;
    // The raw value: the path is percent-encoded, not escaped the key-file way.
    gchar *path = g_key_file_get_value(keys.get(), "Trash Info", "Path", nullptr);
    if (!path || !*path) {
        g_free(path);
        return std::nullopt;
    }
    TrashRecord record;
    record.originalPath = QByteArray::fromPercentEncoding(QByteArray(path));
    g_free(path);
    if (!record.originalPath.startsWith('/'))
        record.originalPath = joined(top, record.originalPath);
    if (gchar *date = g_key_file_get_value(keys.get(), "Trash Info", "DeletionDate", nullptr)) {
        record.deletionDate = QDateTime::fromString(QString::fromLatin1(date), Qt::ISODate);
        g_free(date);
    }
    return record;
}

// The name under files/ of the entry that is the file with this device and inode number: a move into
// the Trash renames, which keeps both.
std::optional<QByteArray> entryWithInode(const QByteArray &trashFolder, dev_t device, ino_t inode, const QByteArray &name)
{
    const QByteArray files = trashFolder + "/files";
    // Most items keep their own name; a large Trash is listed only when it did not.
    struct stat status;
    if (lstatPath(files + '/' + name, &status) && status.st_dev == device && status.st_ino == inode)
        return name;
    DIR *folder = ::opendir(files.constData());
    if (!folder)
        return std::nullopt;
    std::optional<QByteArray> found;
    while (const dirent *entry = ::readdir(folder)) {
        if (entry->d_ino != inode)
            continue;
        if (::fstatat(::dirfd(folder), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && status.st_dev == device
            && status.st_ino == inode) {
            found = QByteArray(entry->d_name);
            break;
        }
    }
    ::closedir(folder);
    return found;
}

bool moveFile(const QByteArray &from, const QByteArray &to, QString *error)
{
    const GFilePointer source(g_file_new_for_path(from.constData()));
    const GFilePointer target(g_file_new_for_path(to.constData()));
    GError *failure = nullptr;
    // Without G_FILE_COPY_OVERWRITE GIO refuses an existing target
    // (https://docs.gtk.org/gio/method.File.move.html): a put-back never replaces what took the place.
    if (g_file_move(source.get(), target.get(), GFileCopyFlags(G_FILE_COPY_NOFOLLOW_SYMLINKS | G_FILE_COPY_ALL_METADATA),
                    nullptr, nullptr, nullptr, &failure))
        return true;
    *error = takeMessage(failure, QStringLiteral("The item could not be moved."));
    return false;
}

// A path as GIO records it: absolute, without doubled or trailing separators.
QByteArray canonical(const QByteArray &path)
{
    gchar *clean = g_canonicalize_filename(path.constData(), "/");
    const QByteArray result(clean);
    g_free(clean);
    return result;
}

QString homeMissingMessage()
{
    const QByteArray home(g_get_home_dir());
    struct stat status;
    if (lstatPath(home, &status))
        return QString();
    return QStringLiteral("The home folder “%1” is missing, so there is no Trash to move items to.")
        .arg(NativePath::decode(home));
}

} // namespace

// Not QFile::moveToTrash: on Linux, Qt 6.4 moves the item first and writes its record afterwards without
// checking the write, then reports success (moveFileToTrash in
// https://github.com/qt/qtbase/blob/6.4/src/corelib/io/qfilesystemengine_unix.cpp), so on a full disk
// the item sits in the Trash with an empty record and nothing can put it back. GIO writes the record
// first; its unchecked write is caught below.
bool moveToTrash(const QString &path, QString *error, QString *trashedPath)
{
    const QByteArray native = NativePath::encode(path);
    struct stat before;
    const bool existed = lstatPath(native, &before);

    const GFilePointer file(g_file_new_for_path(native.constData()));
    GError *failure = nullptr;
    if (!g_file_trash(file.get(), nullptr, &failure)) {
        const QString message = takeMessage(failure, QStringLiteral("The item could not be moved to the Trash."));
        const QString homeMissing = homeMissingMessage();
        if (error)
            *error = homeMissing.isEmpty() ? message : homeMissing;
        return false;
    }
    if (!existed)
        return true;

    for (const TrashFolder &trash : trashesFor(parentOf(native), before.st_dev, true)) {
        const std::optional<QByteArray> name = entryWithInode(trash.folder, before.st_dev, before.st_ino, nameOf(native));
        if (!name)
            continue;
        const QByteArray entry = trash.folder + "/files/" + *name;
        const QByteArray info = infoFileOf(trash, *name);
        const std::optional<TrashRecord> record = readRecord(info, trash.top);
        if (record && record->originalPath == canonical(native)) {
            if (trashedPath)
                *trashedPath = NativePath::decode(entry);
            return true;
        }
        // GLib 2.74 ignores a failed write of the record: g_local_file_trash passes no GError to
        // g_file_set_contents_full and moves the item regardless
        // (https://gitlab.gnome.org/GNOME/glib/-/blob/2.74.6/gio/glocalfile.c), so a full disk leaves the
        // record empty. An entry without one cannot be restored by anything: the item goes back.
        QString moveError;
        if (!moveFile(entry, native, &moveError)) {
            if (error)
                *error = QStringLiteral("The Trash could not record where the item came from, and moving it back "
                                        "failed (%1); it is at “%2”.")
                             .arg(moveError, NativePath::decode(entry));
            return false;
        }
        ::unlink(info.constData());
        if (error)
            *error = QStringLiteral("The Trash could not record where the item came from (is the disk full?), "
                                    "so it was left in place.");
        return false;
    }
    // Moved, but into no Trash this process can read: nothing to verify or to put back later.
    return true;
}

bool putBack(const QString &trashedPath, const QString &originalPath, QString *error)
{
    const QByteArray entry = NativePath::encode(trashedPath);
    const QByteArray original = NativePath::encode(originalPath);
    struct stat status;
    const std::optional<TrashFolder> trash = trashOf(entry);
    const std::optional<TrashRecord> record =
        trash ? readRecord(infoFileOf(*trash, nameOf(entry)), trash->top) : std::nullopt;
    if (!trash || !record || record->originalPath != canonical(original) || !lstatPath(entry, &status)) {
        *error = QStringLiteral("The item is no longer in the Trash.");
        return false;
    }
    if (lstatPath(original, &status)) {
        *error = QStringLiteral("Something else is at “%1” now, so the item was left in the Trash.").arg(originalPath);
        return false;
    }
    const QByteArray parent = parentOf(original);
    if (g_mkdir_with_parents(parent.constData(), 0777) != 0) {
        *error = QStringLiteral("The folder “%1” could not be created: %2")
                     .arg(NativePath::decode(parent), QString::fromLocal8Bit(g_strerror(errno)));
        return false;
    }
    if (!moveFile(entry, original, error))
        return false;
    ::unlink(infoFileOf(*trash, nameOf(entry)).constData());
    return true;
}

std::optional<QString> newestEntry(const QString &originalPath)
{
    const QByteArray original = canonical(NativePath::encode(originalPath));
    const QByteArray near = existingAncestor(parentOf(original));
    struct stat status;
    if (!lstatPath(near, &status))
        return std::nullopt;
    std::optional<QString> newest;
    QDateTime newestDate;
    qint64 newestChange = -1;
    for (const TrashFolder &trash : trashesFor(near, status.st_dev, false)) {
        const auto records = FileSystem::contentsOfDirectory(NativePath::decode(trash.folder + "/info"), false);
        for (const FileSystem::DirectoryEntry &info : records.value_or(QList<FileSystem::DirectoryEntry>())) {
            if (!info.name.endsWith(QLatin1String(".trashinfo")))
                continue;
            const std::optional<TrashRecord> record = readRecord(NativePath::encode(info.path), trash.top);
            if (!record || record->originalPath != original)
                continue;
            const QByteArray entry = trash.folder + "/files/" + NativePath::encode(info.name.chopped(10));
            struct stat entryStatus;
            if (!lstatPath(entry, &entryStatus))
                continue;
            // The record's date counts whole seconds; the move's own change time orders two within one.
            const qint64 change = qint64(entryStatus.st_ctim.tv_sec) * 1000000000 + entryStatus.st_ctim.tv_nsec;
            if (!newest || record->deletionDate > newestDate || (record->deletionDate == newestDate && change > newestChange)) {
                newest = NativePath::decode(entry);
                newestDate = record->deletionDate;
                newestChange = change;
            }
        }
    }
    return newest;
}

#endif

} // namespace Trash
