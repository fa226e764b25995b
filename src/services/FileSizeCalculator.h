// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// The one way sizes are measured: logical bytes of regular files, with a bound on how many entries a
// folder walk may look at so that a huge cache costs bounded time (the result is then an underestimate).
namespace FileSizeCalculator {

inline constexpr qint64 defaultEntryLimit = 25000;
inline constexpr qint64 quickEntryLimit = 500;

// A file's size, or a folder's through directorySize. 0 when nothing exists at the path, and 0 for a
// symbolic link, which is what moving it frees.
[[nodiscard]] qint64 itemSize(const QString &path, qint64 entryLimit = defaultEntryLimit);
// Depth-first, pre-order, in the order the system lists each folder. Hidden names are neither counted
// nor entered; package folders below the start count as one entry, add 0 and are not entered; symbolic
// links are counted and never followed, the starting path included (0 when it is a link). Stops before
// the first entry beyond the limit.
[[nodiscard]] qint64 directorySize(const QString &path, qint64 entryLimit = defaultEntryLimit);
[[nodiscard]] qint64 quickItemSize(const QString &path);

} // namespace FileSizeCalculator
