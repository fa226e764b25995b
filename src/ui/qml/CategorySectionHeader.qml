// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import Kestrune.Core

// The top of a category's card in the results list: the select-all box with the title, the count and
// size, and the "System" tag. The list hands a header from one section to another while scrolling,
// so its height never changes and its parts are placed by anchors, which follow at once.
Item {
    id: header
    // The section title: a plain property, because Qt 6.4 refills only the context property
    // `section` when it hands a cached header to another section.
    property string category
    property CategorySectionListModel categories
    signal selectionRequested(string category, bool isSelected)

    // A list section only knows its title; the figures come from the categories model, re-read
    // whenever it changes.
    property int revision: 0
    readonly property var info: { revision; return categories ? categories.section(category) : ({}) }
    readonly property int itemCount: info.itemCount !== undefined ? info.itemCount : 0
    readonly property bool allSelected: info.selectedCount === itemCount
    readonly property real cardWidth: width - 2 * AppTheme.contentPadding

    function requestSelection(isSelected) {
        selectionRequested(category, isSelected)
        // The box follows the model again once the view model has applied the change.
        toggle.checked = Qt.binding(() => header.allSelected)
    }

    Connections {
        target: header.categories
        function onDataChanged() { ++header.revision }
        function onModelReset() { ++header.revision }
    }

    width: ListView.view ? ListView.view.width : implicitWidth
    height: 14 + 22 + 8

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
            text: header.itemCount + " items • " + (header.info.formattedSize || "")
            font.pixelSize: AppTheme.subheadline
            color: AppTheme.secondary
            elide: Text.ElideRight
        }
        Rectangle {
            id: systemTag
            objectName: "systemTag"
            visible: header.info.systemLevel === true
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
