// SPDX-License-Identifier: MIT
import QtQuick

Rectangle {
    // The grade's label, and its kind ("high", "medium" or "uncertain") for the colours.
    property string confidence
    property string grade
    readonly property color gradeColor: AppTheme.gradeColor(grade)
    implicitWidth: label.implicitWidth + 16
    implicitHeight: label.implicitHeight + 8
    radius: height / 2
    color: Qt.rgba(gradeColor.r, gradeColor.g, gradeColor.b, AppTheme.gradeTintOpacity(grade))
    Text {
        id: label
        anchors.centerIn: parent
        text: confidence
        font.pixelSize: AppTheme.caption2; font.weight: Font.DemiBold
        color: AppTheme.gradeTextColor(grade)
    }
}
