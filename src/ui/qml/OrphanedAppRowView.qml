// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts

RowLayout {
    property string displayName
    // "3 items • 2 KB"
    property string summary
    // The group's grade: "high", "medium" or "uncertain", and its tag.
    property string grade
    property string gradeTag
    readonly property color gradeColor: AppTheme.gradeColor(grade)
    spacing: 12
    Rectangle {
        implicitWidth: 32; implicitHeight: 32; radius: 8
        color: Qt.rgba(AppTheme.accentSecondary.r, AppTheme.accentSecondary.g, AppTheme.accentSecondary.b, 0.14)
        Symbol { id: appSymbol; objectName: "rowSymbol"; anchors.centerIn: parent; name: "app.badge.checkmark.fill"; size: 16; color: AppTheme.accentSecondary }
        // The badge sits on a disc of the row's own background, so it reads apart from the glyph.
        Rectangle {
            x: appSymbol.x + appSymbol.width - 6; y: appSymbol.y + appSymbol.height - 6
            width: 10; height: 10; radius: 5
            color: AppTheme.sidebarBackground
            Symbol { anchors.centerIn: parent; name: "checkmark.circle.fill"; size: 10; color: AppTheme.accentSecondary }
        }
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
        Text { text: summary; font.pixelSize: AppTheme.caption; color: AppTheme.secondary }
    }
    Rectangle {
        implicitWidth: tag.implicitWidth + 14; implicitHeight: tag.implicitHeight + 8
        radius: height / 2
        color: Qt.rgba(gradeColor.r, gradeColor.g, gradeColor.b, 0.14)
        Text {
            id: tag
            objectName: "gradeTag"
            anchors.centerIn: parent
            text: gradeTag
            font.pixelSize: AppTheme.caption2; font.bold: true; color: AppTheme.gradeTextColor(grade)
        }
    }
}
