// SPDX-License-Identifier: MIT
#pragma once

// Whether macOS's privacy protection hides part of the user's Library from this program. Other apps'
// folders under ~/Library/Containers and ~/Library/Group Containers are refused (or asked for) since
// macOS 14 unless the program has Full Disk Access; the scanners pass over such folders silently.
namespace LibraryAccess {

// True when one of those folders, a folder directly inside them, or an app container's Data folder
// exists but cannot be listed. Does file work: call it off the main thread.
[[nodiscard]] bool isRefused();

} // namespace LibraryAccess
