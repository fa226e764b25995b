// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <array>
#include <optional>

// Which list the sidebar shows. A namespace with Q_NAMESPACE so QML can name the cases.
namespace SidebarModes {
Q_NAMESPACE
QML_NAMED_ELEMENT(SidebarMode)

// Capitalised because QML reaches only enumerators that start with a capital letter.
enum class Mode { Installed, Removed };
Q_ENUM_NS(Mode)

inline constexpr std::array<Mode, 2> allCases = {Mode::Installed, Mode::Removed};

// The picker's label, which is also the mode's identity.
[[nodiscard]] inline QString rawValue(Mode mode)
{
    return mode == Mode::Installed ? QStringLiteral("Installed") : QStringLiteral("Removed Apps");
}

[[nodiscard]] inline std::optional<Mode> fromRawValue(const QString &rawValue)
{
    for (Mode mode : allCases) {
        if (SidebarModes::rawValue(mode) == rawValue)
            return mode;
    }
    return std::nullopt;
}

} // namespace SidebarModes

using SidebarMode = SidebarModes::Mode;
