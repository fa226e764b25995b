// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The detail pane's buttons: filled with the accent (`prominent`), or outlined, red for a destructive
// action; an optional symbol leads the title.
Button {
    id: control
    property string symbol
    property bool prominent: false
    property bool destructive: false
    property bool large: false
    readonly property color textColor: prominent ? "white" : destructive ? AppTheme.redText : AppTheme.primary

    font.pixelSize: AppTheme.body
    font.weight: prominent ? Font.DemiBold : Font.Normal
    leftPadding: large ? 18 : 12
    rightPadding: large ? 18 : 12
    topPadding: large ? 8 : 5
    bottomPadding: large ? 8 : 5
    opacity: enabled ? 1 : 0.45
    // In a row that runs short of room the title elides rather than pushing its neighbours out.
    Layout.fillWidth: true
    Layout.maximumWidth: implicitWidth
    Layout.minimumWidth: leftPadding + rightPadding + (symbol !== "" ? 24 : 0) + 24
    hoverEnabled: true
    // Return and Enter press the focused button, as Space does.
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    contentItem: RowLayout {
        spacing: 6
        Symbol {
            visible: control.symbol !== ""
            name: control.symbol
            size: control.font.pixelSize + 4
            color: control.textColor
        }
        Text {
            Layout.fillWidth: true
            text: control.text
            font: control.font
            color: control.textColor
            elide: Text.ElideRight
            verticalAlignment: Text.AlignVCenter
        }
    }
    background: Rectangle {
        implicitHeight: control.large ? 34 : 28
        radius: control.large ? 8 : 6
        readonly property real shade: control.down ? 0.14 : control.hovered ? 0.09 : 0.05
        color: control.prominent
               ? (control.down ? Qt.darker(AppTheme.accentFill, 1.15) : control.hovered ? Qt.darker(AppTheme.accentFill, 1.07) : AppTheme.accentFill)
               : Qt.rgba(AppTheme.primary.r, AppTheme.primary.g, AppTheme.primary.b, shade)
        border.width: control.prominent ? 0 : 1
        border.color: Qt.rgba(AppTheme.primary.r, AppTheme.primary.g, AppTheme.primary.b, 0.12)
        FocusRing { shown: control.visualFocus; cornerRadius: parent.radius }
    }
}
