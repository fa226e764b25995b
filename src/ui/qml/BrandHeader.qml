// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts

Item {
    property string subtitle
    implicitHeight: card.height + 10
    Rectangle {
        id: card
        x: 12; width: parent.width - 24
        height: row.implicitHeight + 24
        radius: 16
        color: AppTheme.cardBackground
        border.color: AppTheme.subtleBorder
        RowLayout {
            id: row
            anchors.fill: parent; anchors.leftMargin: 16; anchors.rightMargin: 16
            spacing: 12
            AppIconView { size: 42; cornerRadius: 12 }
            ColumnLayout {
                spacing: 2
                Text { text: "Kestrune"; font.pixelSize: AppTheme.headline; font.weight: Font.DemiBold; color: AppTheme.primary }
                Text { text: subtitle; font.pixelSize: AppTheme.caption; color: AppTheme.secondary }
            }
            Item { Layout.fillWidth: true }
        }
    }
}
