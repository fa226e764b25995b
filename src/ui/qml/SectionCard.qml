// SPDX-License-Identifier: MIT
import QtQuick

// Adds no padding: the content decides its own.
Rectangle {
    default property alias content: holder.data
    implicitWidth: holder.childrenRect.width
    implicitHeight: holder.childrenRect.height
    radius: AppTheme.cornerRadiusMedium
    color: AppTheme.cardBackground
    border.color: AppTheme.subtleBorder
    border.width: 1
    Item { id: holder; anchors.fill: parent }
}
