// SPDX-License-Identifier: MIT
import QtQuick

Rectangle {
    id: card
    property bool removed: false
    default property alias content: holder.data
    implicitHeight: holder.childrenRect.height + 40
    radius: AppTheme.cornerRadiusLarge
    gradient: Gradient {
        orientation: Gradient.Horizontal
        GradientStop { position: 0; color: AppTheme.gradientStops(card.removed)[0] }
        GradientStop { position: 1; color: AppTheme.gradientStops(card.removed)[1] }
    }
    border.color: Qt.rgba(1, 1, 1, 0.12)
    border.width: 1
    Item { id: holder; x: 20; y: 20; width: parent.width - 40; height: childrenRect.height }
}
