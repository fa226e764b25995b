// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts

RowLayout {
    property string appPath
    property string name
    property string formattedSize
    spacing: 12
    AppIconView {
        size: 32; cornerRadius: 8; shadow: false
        source: "image://appicon/" + encodeURIComponent(appPath)
    }
    ColumnLayout {
        spacing: 3
        Layout.fillWidth: true
        Text {
            objectName: "rowName"
            Layout.fillWidth: true
            text: name; font.pixelSize: AppTheme.body; font.weight: Font.Medium; color: AppTheme.primary
            elide: Text.ElideRight; maximumLineCount: 1
        }
        Text { text: formattedSize; font.pixelSize: AppTheme.caption; color: AppTheme.secondary }
    }
}
