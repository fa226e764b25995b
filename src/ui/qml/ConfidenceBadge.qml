// SPDX-License-Identifier: MIT
import QtQuick

Rectangle {
    property string confidence
    readonly property bool uncertain: confidence !== "Likely removed app" && confidence !== "Possible leftover"
    implicitWidth: label.implicitWidth + 16
    implicitHeight: label.implicitHeight + 8
    radius: height / 2
    color: Qt.rgba(AppTheme.confidenceColor(confidence).r, AppTheme.confidenceColor(confidence).g,
                   AppTheme.confidenceColor(confidence).b, uncertain ? 0.16 : 0.18)
    Text {
        id: label
        anchors.centerIn: parent
        text: confidence
        font.pixelSize: AppTheme.caption2; font.weight: Font.DemiBold
        color: AppTheme.confidenceTextColor(confidence)
    }
}
