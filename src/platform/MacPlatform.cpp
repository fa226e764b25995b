// SPDX-License-Identifier: MIT
#include "platform/MacPlatform.h"

#include <QtGlobal>

// On a Mac these are in MacPlatform.mm.
#ifndef Q_OS_MACOS

#include "platform/Trash.h"

namespace MacPlatform {

bool trashItem(const QString &path, QString *error, QString *trashedPath)
{
    return Trash::moveToTrash(path, error, trashedPath);
}

bool beep()
{
    return false;
}

bool showAboutPanel()
{
    return false;
}

bool canOpenFullDiskAccessSettings()
{
    return false;
}

void openFullDiskAccessSettings() {}

} // namespace MacPlatform

#endif
