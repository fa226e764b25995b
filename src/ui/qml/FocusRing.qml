// SPDX-License-Identifier: MIT
import QtQuick

// The keyboard-focus mark: an outline just outside the shape it is placed in.
Rectangle {
    objectName: "focusRing"
    property bool shown: false
    property real cornerRadius: 6
    anchors.fill: parent
    anchors.margins: -3
    radius: cornerRadius - anchors.margins
    color: "transparent"
    border.width: 2
    border.color: AppTheme.focusRing
    visible: shown
}
