// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

Item {
    id: bar
    property string title
    property string countText
    property string refreshHelp
    signal refresh()
    implicitHeight: row.implicitHeight + 8
    RowLayout {
        id: row
        x: 16; width: parent.width - 32
        ColumnLayout {
            spacing: 2
            Text { text: bar.title; font.pixelSize: AppTheme.headline; font.weight: Font.DemiBold; color: AppTheme.primary }
            Text { objectName: "countText"; text: bar.countText; font.pixelSize: AppTheme.caption; color: AppTheme.secondary }
        }
        Item { Layout.fillWidth: true }
        ToolButton {
            id: refreshButton
            objectName: "refreshButton"
            background: Rectangle {
                implicitWidth: 28; implicitHeight: 28; radius: 6
                color: refreshButton.hovered ? Qt.rgba(AppTheme.primary.r, AppTheme.primary.g, AppTheme.primary.b, 0.07) : "transparent"
                FocusRing { shown: refreshButton.visualFocus; cornerRadius: 6 }
            }
            contentItem: Symbol { name: "arrow.clockwise"; size: 18; color: AppTheme.accent }
            ToolTip.text: bar.refreshHelp
            ToolTip.visible: hovered
            Accessible.name: bar.refreshHelp
            onClicked: bar.refresh()
        }
    }
}
