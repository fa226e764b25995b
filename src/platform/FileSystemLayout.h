// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// The folder that stands for "/" and the user's home folder. On a Mac these are "/" and $HOME; on every
// other machine, and in every test, they point into a sample Mac. Every absolute path a service forms
// goes through here.
namespace FileSystemLayout {

// Both are set once at start-up (or per test case) before background work begins.
void setRoot(const QString &root);
void setHome(const QString &home);

// Without a trailing slash; "/" gives "".
[[nodiscard]] QString rootPrefix();
// The home folder, without a trailing slash.
[[nodiscard]] QString home();
// An absolute Mac path such as "/Library/Caches" placed under the root.
[[nodiscard]] QString systemPath(const QString &absolutePath);
// A path under home, e.g. homePath("/Library/Caches").
[[nodiscard]] QString homePath(const QString &relativeToHome);

} // namespace FileSystemLayout
