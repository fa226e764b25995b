// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

Item {
    id: search
    property string placeholder
    property alias text: field.text
    signal edited(string text)
    implicitHeight: box.height + 10
    Rectangle {
        id: box
        x: 16; width: parent.width - 32
        height: row.implicitHeight + 20
        radius: AppTheme.cornerRadiusSmall
        color: AppTheme.cardBackground
        border.color: AppTheme.subtleBorder
        FocusRing { shown: field.activeFocus; cornerRadius: box.radius }
        RowLayout {
            id: row
            anchors.fill: parent; anchors.leftMargin: 12; anchors.rightMargin: 12
            spacing: 8
            Symbol { name: "magnifyingglass"; size: 16; color: AppTheme.secondary }
            TextField {
                id: field
                objectName: "searchInput"
                Layout.fillWidth: true
                placeholderText: search.placeholder
                Accessible.name: search.placeholder
                background: null
                padding: 0
                font.pixelSize: AppTheme.body
                color: AppTheme.primary
                placeholderTextColor: AppTheme.secondary
                selectionColor: AppTheme.accentFill
                selectedTextColor: "white"
                onTextEdited: search.edited(text)
            }
        }
    }
}
