// SPDX-License-Identifier: MIT
#pragma once

#include "models/InstalledApp.h"

#include <QString>

#include <optional>

// Whether this user can move an app's bundle to the Trash. Asked before anything of an installed app
// moves: the Library items go first (deepest path first), so a bundle that then refuses to move would
// leave the app installed with its data gone.
namespace BundleRemovability {

enum class Obstacle {
    none,
    systemLocation, // under ROOT/System or ROOT/usr, which the system protects
    appleApp,       // an Apple identifier: part of macOS, or restored by it
    folderNotWritable, // the folder holding the bundle does not let this user take things out
    bundleNotWritable, // the bundle itself is not this user's to move (an App Store app, a root install)
};

// Does file work: call it off the main thread. A bundle that no longer exists has no obstacle; its
// move fails with the platform's own message.
[[nodiscard]] Obstacle obstacle(const QString &bundlePath, const std::optional<QString> &bundleIdentifier);

// What the status line and the command line say: why, that nothing moved, and the administrator's way.
[[nodiscard]] QString explanation(Obstacle obstacle, const InstalledApp &app);

// The explanation when the app's bundle cannot move, else none.
[[nodiscard]] std::optional<QString> check(const InstalledApp &app);

} // namespace BundleRemovability
