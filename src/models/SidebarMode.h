// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// Which list the sidebar shows. A namespace with Q_NAMESPACE so QML can name the cases.
namespace SidebarModes {
Q_NAMESPACE
QML_NAMED_ELEMENT(SidebarMode)

// Capitalised because QML reaches only enumerators that start with a capital letter.
enum class Mode { Installed, Removed };
Q_ENUM_NS(Mode)

// The picker's label, which is also the mode's identity.
[[nodiscard]] inline QString rawValue(Mode mode)
{
    return mode == Mode::Installed ? QStringLiteral("Installed") : QStringLiteral("Removed Apps");
}

} // namespace SidebarModes

using SidebarMode = SidebarModes::Mode;
