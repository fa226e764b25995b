// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Kestrune.Core

// What the last move to the Trash left behind: the first five failures only, uncounted beyond that.
Rectangle {
    id: banner
    property deletionReportValue report
    property string title: "Some items could not be removed"
    implicitHeight: column.implicitHeight + 28
    radius: AppTheme.cornerRadiusMedium
    color: Qt.rgba(AppTheme.orange.r, AppTheme.orange.g, AppTheme.orange.b, 0.08)
    ColumnLayout {
        id: column
        x: 14; y: 14; width: parent.width - 28
        spacing: 8
        RowLayout {
            spacing: 6
            Symbol { name: "exclamationmark.triangle.fill"; size: AppTheme.headline + 4; color: AppTheme.orange }
            Text {
                text: banner.title
                font.pixelSize: AppTheme.headline; font.weight: Font.DemiBold
                color: AppTheme.orangeText
            }
        }
        Repeater {
            model: banner.report && banner.report.valid ? banner.report.failures.slice(0, 5) : []
            TextEdit {
                objectName: "failureLine"
                required property var modelData
                Layout.fillWidth: true
                text: modelData.line
                font.pixelSize: AppTheme.caption
                color: AppTheme.secondary
                wrapMode: TextEdit.Wrap
                readOnly: true
                selectByMouse: true
                selectionColor: AppTheme.accent
            }
        }
    }
}
