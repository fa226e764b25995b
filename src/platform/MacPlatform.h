// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// The few Cocoa calls Qt has no twin for. MacPlatform.mm holds them and is built only on a Mac;
// MacPlatform.cpp holds what the same functions do everywhere else.
namespace MacPlatform {

// Moves the item to the Trash with the system's own call (NSFileManager), whose errors read as the
// system words them. On failure *error is that sentence; on success *trashedPath is where the item now
// lies in the Trash, which putting it back needs. Elsewhere: the freedesktop Trash.
[[nodiscard]] bool trashItem(const QString &path, QString *error, QString *trashedPath = nullptr);

// The system's alert sound. False where the platform has none of its own: the caller plays its stand-in.
[[nodiscard]] bool beep();

// The standard About panel, filled from the bundle's Info.plist. False where there is none.
[[nodiscard]] bool showAboutPanel();

// The Full Disk Access list in System Settings' Privacy & Security; only a Mac has one.
[[nodiscard]] bool canOpenFullDiskAccessSettings();
void openFullDiskAccessSettings();

} // namespace MacPlatform
