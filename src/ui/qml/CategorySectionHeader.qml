// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls

// The top of a category's card in the results list: the select-all box with the title, the count and
// size, and the "System" tag. The first row of a category draws it above itself.
Item {
    id: header
    property string category
    // "3 items • 2 KB"
    property string summary
    property bool allSelected
    property bool systemLevel
    signal selectionRequested(bool isSelected)

    readonly property real cardWidth: width - 2 * AppTheme.contentPadding

    function requestSelection(isSelected) {
        selectionRequested(isSelected)
        // The box follows the model again once the view model has applied the change.
        toggle.checked = Qt.binding(() => header.allSelected)
    }

    implicitHeight: 14 + 22 + 8

    CardSlice {
        x: AppTheme.contentPadding
        width: header.cardWidth
        height: parent.height
        opensCard: true
    }
    CheckBox {
        id: toggle
        objectName: "categoryToggle"
        x: AppTheme.contentPadding + 14
        y: 14
        width: 22; height: 22
        padding: 0
        text: header.category
        checked: header.allSelected
        onToggled: header.requestSelection(checked)
        // Drawn like the rows' boxes, so a section and its rows read as one set of ticks.
        indicator: Symbol {
            anchors.centerIn: parent
            name: toggle.checked ? "checkmark.square.fill" : "square"
            size: 20
            color: toggle.checked ? AppTheme.accent : AppTheme.secondary
            FocusRing { shown: toggle.visualFocus; anchors.margins: -1; cornerRadius: 3 }
        }
        contentItem: Item {}
        background: null
    }
    // The label belongs to the box: a click on it switches the box too.
    Item {
        id: label
        anchors.left: toggle.right; anchors.leftMargin: 8
        anchors.verticalCenter: toggle.verticalCenter
        width: AppTheme.contentPadding + header.cardWidth - 14 - x
        height: toggle.height
        TapHandler { onTapped: header.requestSelection(!toggle.checked) }
        Text {
            id: title
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, parent.width)
            text: header.category
            font.pixelSize: AppTheme.headline; font.weight: Font.DemiBold
            color: AppTheme.primary
            elide: Text.ElideRight
        }
        Text {
            id: count
            objectName: "categoryCount"
            anchors.left: title.right; anchors.leftMargin: 8
            anchors.baseline: title.baseline
            width: Math.max(0, Math.min(implicitWidth, parent.width - x - (systemTag.visible ? systemTag.width + 8 : 0)))
            text: header.summary
            font.pixelSize: AppTheme.subheadline
            color: AppTheme.secondary
            elide: Text.ElideRight
        }
        Rectangle {
            id: systemTag
            objectName: "systemTag"
            visible: header.systemLevel
            anchors.left: count.right; anchors.leftMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            width: tagText.implicitWidth + 12
            height: tagText.implicitHeight + 4
            radius: height / 2
            color: Qt.rgba(AppTheme.orange.r, AppTheme.orange.g, AppTheme.orange.b, 0.15)
            Text {
                id: tagText
                anchors.centerIn: parent
                text: "System"
                font.pixelSize: AppTheme.caption2; font.weight: Font.DemiBold
                color: AppTheme.orangeText
            }
        }
    }
}
