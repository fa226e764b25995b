// SPDX-License-Identifier: MIT
import QtQuick

// A platform symbol name drawn from the Material Icons font through its ligatures.
Text {
    property string name
    property real size: 16
    text: AppTheme.glyph(name)
    font.family: "Material Icons"
    font.pixelSize: size
    color: AppTheme.primary
    horizontalAlignment: Text.AlignHCenter
    verticalAlignment: Text.AlignVCenter
}
