// SPDX-License-Identifier: MIT
#pragma once

class QQmlEngine;

// What every engine that shows the window's views needs and the QML modules cannot bring: the icon
// font, the Fusion style, the "appicon" image provider. The program and the Qt Quick tests share it.
namespace KestruneQml {

void prepareEngine(QQmlEngine &engine);

} // namespace KestruneQml
