// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls

// A sidebar list the keyboard can drive: Tab reaches it, the arrow keys select the row above or below,
// Return and Enter ask for the selected row's action. Rows are SidebarRows.
ListView {
    id: list
    signal rowChosen(string id)
    signal activated()

    activeFocusOnTab: true
    keyNavigationEnabled: false
    clip: true
    reuseItems: true
    ScrollBar.vertical: ScrollBar {}

    // The current row starts on the selected one: a row is selected by the view model, often before
    // the list has built it.
    function syncCurrent() {
        if (currentItem && currentItem.highlighted)
            return
        for (let i = 0; i < contentItem.children.length; ++i) {
            const row = contentItem.children[i]
            if (row.visible && row.highlighted && row.index !== undefined) {
                currentIndex = row.index
                return
            }
        }
        if (currentIndex < 0 && count > 0)
            currentIndex = 0
    }
    onActiveFocusChanged: if (activeFocus) syncCurrent()

    function step(by) {
        if (count === 0)
            return
        syncCurrent()
        currentIndex = currentIndex < 0 ? 0 : Math.max(0, Math.min(count - 1, currentIndex + by))
        positionViewAtIndex(currentIndex, ListView.Contain)
        if (currentItem)
            rowChosen(currentItem.rowId)
    }
    Keys.onUpPressed: step(-1)
    Keys.onDownPressed: step(1)
    Keys.onReturnPressed: activated()
    Keys.onEnterPressed: activated()
}
