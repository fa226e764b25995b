// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// One found file or folder; the whole row, empty space included, toggles its tick.
AbstractButton {
    id: row
    property string name
    property string path
    property string formattedSize
    property bool requiresAdmin: false
    property bool isSelected: false
    // Whose the item is when it is not the scanned app's ("Belongs to …", "Part of macOS").
    property string owner
    property string howFound
    property string spokenName
    signal toggle()

    leftPadding: 14; rightPadding: 14; topPadding: 10; bottomPadding: 10
    hoverEnabled: true
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.CheckBox
    Accessible.name: spokenName
    Accessible.checkable: true
    Accessible.checked: isSelected
    Accessible.selected: isSelected
    ToolTip.visible: hovered && howFound !== "" && !lockHover.hovered
    ToolTip.delay: 600
    ToolTip.text: howFound
    onClicked: toggle()

    background: Rectangle {
        color: row.down ? Qt.rgba(AppTheme.primary.r, AppTheme.primary.g, AppTheme.primary.b, 0.06) : "transparent"
        FocusRing { shown: row.visualFocus; anchors.margins: 2; cornerRadius: 6 }
    }
    contentItem: RowLayout {
        spacing: 12
        Symbol {
            objectName: "checkSymbol"
            name: row.isSelected ? "checkmark.square.fill" : "square"
            size: 20
            color: row.isSelected ? AppTheme.accent : AppTheme.secondary
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2
            Text {
                Layout.fillWidth: true
                text: row.name
                font.pixelSize: AppTheme.body
                color: AppTheme.primary
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideRight
                maximumLineCount: 1
                textFormat: Text.PlainText
            }
            Text {
                Layout.fillWidth: true
                text: row.path
                font.pixelSize: AppTheme.caption
                color: AppTheme.secondary
                horizontalAlignment: Text.AlignLeft
                wrapMode: Text.WrapAnywhere
                maximumLineCount: 2
                elide: Text.ElideRight
                textFormat: Text.PlainText
            }
            Text {
                objectName: "ownerText"
                Layout.fillWidth: true
                visible: row.owner !== ""
                text: row.owner
                font.pixelSize: AppTheme.caption
                color: AppTheme.orange
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideRight
                textFormat: Text.PlainText
            }
        }
        Symbol {
            objectName: "adminLock"
            visible: row.requiresAdmin
            name: "lock.fill"
            size: 15
            color: AppTheme.orange
            HoverHandler { id: lockHover }
            ToolTip.visible: lockHover.hovered
            ToolTip.text: "May require administrator privileges"
        }
        Text {
            text: row.formattedSize
            font.pixelSize: AppTheme.subheadline
            color: AppTheme.secondary
            horizontalAlignment: Text.AlignRight
        }
    }
}
