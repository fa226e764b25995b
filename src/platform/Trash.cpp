// SPDX-License-Identifier: MIT
#include "platform/Trash.h"

#include "platform/NativePath.h"

#ifdef Q_OS_MACOS
#include <QFile>
#else
#include <gio/gio.h>
#endif

namespace Trash {

#ifdef Q_OS_MACOS

bool moveToTrash(const QString &path, QString *error)
{
    QFile file(path);
    if (file.moveToTrash())
        return true;
    if (error)
        *error = file.errorString();
    return false;
}

#else

// Not QFile::moveToTrash: its Linux implementation in Qt 6.4 has defects that can lose the item.
bool moveToTrash(const QString &path, QString *error)
{
    const QByteArray native = NativePath::encode(path);
    GFile *file = g_file_new_for_path(native.constData());
    GError *failure = nullptr;
    const bool moved = g_file_trash(file, nullptr, &failure);
    g_object_unref(file);
    if (!moved && error)
        *error = failure ? QString::fromUtf8(failure->message) : QStringLiteral("The item could not be moved to the Trash.");
    if (failure)
        g_error_free(failure);
    return moved;
}

#endif

} // namespace Trash
