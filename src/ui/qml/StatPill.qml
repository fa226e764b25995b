// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts

Rectangle {
    property string title
    property string value
    property string systemImage
    property bool onHero: false
    implicitWidth: row.implicitWidth + 20
    implicitHeight: row.implicitHeight + 16
    radius: 12
    color: onHero ? Qt.rgba(0, 0, 0, 0.16) : Qt.rgba(AppTheme.primary.r, AppTheme.primary.g, AppTheme.primary.b, 0.04)
    RowLayout {
        id: row
        anchors.centerIn: parent
        spacing: 6
        Symbol { name: systemImage; size: 14; color: onHero ? "white" : AppTheme.accent }
        ColumnLayout {
            spacing: 0
            Text { text: title; font.pixelSize: AppTheme.caption2; color: onHero ? Qt.rgba(1, 1, 1, 0.94) : AppTheme.secondary }
            Text {
                text: value
                font.pixelSize: AppTheme.caption; font.weight: Font.DemiBold
                color: onHero ? "white" : AppTheme.primary
                elide: Text.ElideRight
                Layout.maximumWidth: 260
            }
        }
    }
}
