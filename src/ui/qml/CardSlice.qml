// SPDX-License-Identifier: MIT
import QtQuick

// A horizontal slice of a section card, so a card can span many list delegates: only the slices at the
// card's ends show the rounded corners and the top or bottom edge.
Item {
    property bool opensCard: false
    property bool closesCard: false
    readonly property real overhang: AppTheme.cornerRadiusMedium + 2
    clip: true
    Rectangle {
        x: 0
        y: parent.opensCard ? 0 : -parent.overhang
        width: parent.width
        height: parent.height + (parent.opensCard ? 0 : parent.overhang) + (parent.closesCard ? 0 : parent.overhang)
        radius: AppTheme.cornerRadiusMedium
        color: AppTheme.cardBackground
        border.color: AppTheme.subtleBorder
        border.width: 1
    }
}
