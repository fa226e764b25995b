// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrune.Core

Item {
    id: banner
    property updateValue update
    signal download()
    signal dismiss()
    implicitHeight: box.height + 14
    Rectangle {
        id: box
        x: 16; y: 10; width: parent.width - 32
        height: row.implicitHeight + 24
        radius: 14
        color: Qt.rgba(AppTheme.accent.r, AppTheme.accent.g, AppTheme.accent.b, 0.08)
        border.color: Qt.rgba(AppTheme.accent.r, AppTheme.accent.g, AppTheme.accent.b, 0.18)
        RowLayout {
            id: row
            anchors.fill: parent; anchors.leftMargin: 16; anchors.rightMargin: 16
            spacing: 12
            Symbol { name: "arrow.down.circle.fill"; size: AppTheme.title3; color: AppTheme.accent }
            ColumnLayout {
                spacing: 2
                Layout.fillWidth: true
                Text {
                    objectName: "updateTitle"
                    text: banner.update ? banner.update.title : ""
                    font.pixelSize: AppTheme.subheadline; font.weight: Font.DemiBold; color: AppTheme.primary
                }
                Text {
                    objectName: "updateNotes"
                    text: banner.update && banner.update.hasReleaseNotes ? banner.update.releaseNotes
                                                                         : "A newer Kestrune build is ready to download."
                    font.pixelSize: AppTheme.caption; color: AppTheme.secondary
                    maximumLineCount: 2; wrapMode: Text.Wrap; elide: Text.ElideRight
                    Layout.fillWidth: true
                }
            }
            DetailButton {
                objectName: "downloadButton"
                text: "Download"
                prominent: true
                onClicked: banner.download()
            }
            Button {
                id: later
                objectName: "laterButton"
                text: "Later"
                flat: true
                contentItem: Text {
                    text: later.text
                    font.pixelSize: AppTheme.body
                    color: later.hovered ? AppTheme.primary : AppTheme.secondary
                }
                background: Item {
                    FocusRing { shown: later.visualFocus; anchors.margins: -2; cornerRadius: 4 }
                }
                hoverEnabled: true
                onClicked: banner.dismiss()
            }
        }
    }
}
