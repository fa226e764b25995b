// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// The Mac's byte-count text in its file style: decimal units, "Zero KB", "1 byte", "350 bytes",
// "12 KB", "1.5 MB", "2.34 GB".
namespace ByteCountFormatter {

[[nodiscard]] QString string(qint64 byteCount);

} // namespace ByteCountFormatter
