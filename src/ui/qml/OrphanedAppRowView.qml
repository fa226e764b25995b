// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts

RowLayout {
    property string displayName
    property int itemCount
    property string formattedSize
    property string confidence
    readonly property color gradeColor: confidence === "Likely removed app" ? AppTheme.green
                                      : confidence === "Possible leftover" ? AppTheme.orange : AppTheme.secondary
    spacing: 12
    Rectangle {
        implicitWidth: 32; implicitHeight: 32; radius: 8
        color: Qt.rgba(AppTheme.accentSecondary.r, AppTheme.accentSecondary.g, AppTheme.accentSecondary.b, 0.14)
        Symbol { anchors.centerIn: parent; name: "app.badge.checkmark.fill"; size: 16; color: AppTheme.accentSecondary }
    }
    ColumnLayout {
        spacing: 3
        Layout.fillWidth: true
        Text {
            objectName: "rowName"
            Layout.fillWidth: true
            text: displayName; font.pixelSize: AppTheme.body; font.weight: Font.Medium; color: AppTheme.primary
            elide: Text.ElideRight; maximumLineCount: 1
        }
        Text { text: itemCount + " items • " + formattedSize; font.pixelSize: AppTheme.caption; color: AppTheme.secondary }
    }
    Rectangle {
        implicitWidth: tag.implicitWidth + 14; implicitHeight: tag.implicitHeight + 8
        radius: height / 2
        color: Qt.rgba(gradeColor.r, gradeColor.g, gradeColor.b, 0.14)
        Text {
            id: tag
            objectName: "gradeTag"
            anchors.centerIn: parent
            text: confidence === "Likely removed app" ? "High" : confidence === "Possible leftover" ? "Med" : "Low"
            font.pixelSize: AppTheme.caption2; font.bold: true; color: gradeColor
        }
    }
}
