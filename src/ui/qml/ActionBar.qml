// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts

// A card row with its controls split to both ends: `leading` and `trailing` take the children.
Rectangle {
    default property alias leading: leadingRow.data
    property alias trailing: trailingRow.data
    implicitHeight: Math.max(leadingRow.implicitHeight, trailingRow.implicitHeight, 28) + 28
    radius: AppTheme.cornerRadiusMedium
    color: AppTheme.cardBackground
    border.color: AppTheme.subtleBorder
    border.width: 1
    RowLayout {
        anchors.fill: parent
        anchors.margins: 14
        spacing: 12
        RowLayout { id: leadingRow; spacing: 8 }
        Item { Layout.fillWidth: true }
        RowLayout { id: trailingRow; spacing: 10 }
    }
}
