// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

enum class SidebarMode { installed, removed };

namespace SidebarModes {

[[nodiscard]] inline QString rawValue(SidebarMode mode)
{
    return mode == SidebarMode::installed ? QStringLiteral("Installed") : QStringLiteral("Removed Apps");
}

} // namespace SidebarModes
