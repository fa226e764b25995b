// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls

// One row of a SidebarList. It has no background of its own: the sidebar shows through, a selected row
// is tinted, and the focused list rings its current row.
ItemDelegate {
    id: row
    required property int index
    property string rowId
    signal chosen()

    width: ListView.view ? ListView.view.width : implicitWidth
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    leftPadding: 16; rightPadding: 16; topPadding: 4; bottomPadding: 4

    // The list's current row follows the selection, so the arrow keys start from the selected row.
    // A row on its way out of a shrinking list may still carry its old index.
    onHighlightedChanged: if (highlighted && ListView.view && index < ListView.view.count) ListView.view.currentIndex = index
    onClicked: {
        ListView.view.forceActiveFocus(Qt.MouseFocusReason)
        chosen()
    }

    background: Rectangle {
        x: 8; width: row.width - 16
        radius: 8
        color: row.highlighted ? AppTheme.selection
             : row.hovered ? Qt.rgba(AppTheme.primary.r, AppTheme.primary.g, AppTheme.primary.b, 0.05) : "transparent"
        FocusRing {
            shown: row.ListView.isCurrentItem && row.ListView.view.activeFocus
            anchors.margins: 1
            cornerRadius: 8
        }
    }
}
