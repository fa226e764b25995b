// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts

// Stands in for the platform's content-unavailable view: large symbol, bold title, secondary text.
Item {
    property string title
    property string symbol
    property string description
    implicitHeight: column.implicitHeight + 24
    ColumnLayout {
        id: column
        anchors.centerIn: parent
        width: Math.min(parent.width - 32, 360)
        spacing: 8
        Symbol { Layout.alignment: Qt.AlignHCenter; name: symbol; size: 44; color: AppTheme.secondary }
        Text {
            Layout.fillWidth: true
            text: title; font.pixelSize: AppTheme.title3; font.bold: true; color: AppTheme.primary
            horizontalAlignment: Text.AlignHCenter; wrapMode: Text.Wrap
        }
        Text {
            Layout.fillWidth: true
            text: description; font.pixelSize: AppTheme.subheadline; color: AppTheme.secondary
            horizontalAlignment: Text.AlignHCenter; wrapMode: Text.Wrap
        }
    }
}
