// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

KestruneTestCase {
    name: "Main"

    function test_updateBannerButtonsAndMenuCommand() {
        const window = openWindow({offeredVersion: "9.0.0"})
        const banner = findChild(window.contentItem, "updateBanner")
        const status = findChild(window.contentItem, "statusBanner")
        verify(!status.visible)
        tryVerify(() => banner.visible)
        mouseClick(findChild(banner, "downloadButton"))
        compare(harness.lastOpenedUrl, "https://example.com/kestrune.dmg")
        verify(banner.visible)

        mouseClick(findChild(banner, "laterButton"))
        verify(!banner.visible)
        verify(!window.viewModel.availableUpdate.valid)

        window.checkForUpdatesAction.trigger()
        tryVerify(() => banner.visible)
        verify(status.visible)
        compare(window.viewModel.statusMessage, "Kestrune 9.0.0 is available to download.")
    }

    // True when a shown focus ring surrounds the item's centre.
    function ringAround(window, item) {
        let root = window.contentItem
        while (root.parent)
            root = root.parent
        const centre = item.mapToItem(root, item.width / 2, item.height / 2)
        return named(root, "focusRing").some((ring) => {
            const box = ring.mapToItem(root, 0, 0, ring.width, ring.height)
            return centre.x >= box.x && centre.x <= box.x + box.width && centre.y >= box.y && centre.y <= box.y + box.height
        })
    }

    // Each key that can press a button, in a freshly opened alert, presses Cancel; Escape cancels too.
    // The buttons are pressed only by key here: a click and a key press reach the same handler.
    // The destructive button is reached by Tab, shows its focus, and is forgotten at the next opening.
    // The message follows the selection while the alert is up (its wording is tst_appviewmodel's), and
    // once the run has moved the items the status bar offers Put Back until it is used.
    function test_alertKeysAndPutBack() {
        harness.trashMoves = true
        const window = openWindow()
        scan(window, "Zeta Tools.app")
        const model = window.viewModel
        const dialog = window.trashDialog
        const cancel = findChild(dialog.footer, "cancelTrashButton")
        const confirm = findChild(dialog.footer, "confirmTrashButton")
        const putBack = findChild(window.contentItem, "putBackButton")
        for (const key of [Qt.Key_Space, Qt.Key_Return, Qt.Key_Enter, Qt.Key_Escape]) {
            model.confirmDelete()
            tryVerify(() => dialog.opened)
            verify(cancel.activeFocus, "Cancel has the focus, key " + key)
            verify(ringAround(window, cancel), "Cancel shows its focus")
            verify(!ringAround(window, confirm))
            keyClick(key)
            tryVerify(() => !dialog.visible)
            verify(!model.showDeleteConfirmation)
            // A run that started is either under way or, every item moving, on offer to be put back.
            verify(!model.isDeleting && !model.canPutBack, "key " + key + " moved nothing")
        }

        model.confirmDelete()
        tryVerify(() => dialog.opened)
        const message = dialog.contentItem.text
        compare(message, model.trashConfirmationText)
        model.deselectAll()
        verify(dialog.contentItem.text !== message)
        compare(dialog.contentItem.text, model.trashConfirmationText)
        model.selectAll()
        keyClick(Qt.Key_Tab)
        verify(confirm.activeFocus && ringAround(window, confirm) && !ringAround(window, cancel))
        keyClick(Qt.Key_Escape)
        tryVerify(() => !dialog.visible)
        model.confirmDelete()
        tryVerify(() => dialog.opened)
        verify(cancel.activeFocus, "the focus is not remembered between openings")
        verify(!putBack.visible)
        const count = model.selectedItems.count
        keyClick(Qt.Key_Tab)
        keyClick(Qt.Key_Return)
        tryVerify(() => !dialog.visible)
        verify(!model.showDeleteConfirmation)
        tryVerify(() => !model.isDeleting && putBack.visible, 10000)
        mouseClick(putBack)
        tryCompare(model, "statusMessage", "Put back " + count + " items.")
        verify(!putBack.visible)
    }

    // Keyboard only: the arrow keys walk the app list, Return scans the selected app, Tab then visits
    // every control of the window, each visibly marked when it has the focus; in the removed mode the
    // arrow keys walk the groups.
    function test_keyboardOnly() {
        const window = openWindow()
        const model = window.viewModel
        const list = findChild(window.contentItem, "appList")
        list.forceActiveFocus(Qt.TabFocusReason)
        compare(model.selectedApp.id, model.apps.count > 0 ? list.itemAtIndex(0).rowId : "")
        keyClick(Qt.Key_Down)
        compare(model.selectedApp.id, list.itemAtIndex(1).rowId)
        keyClick(Qt.Key_Down)
        keyClick(Qt.Key_Up)
        compare(model.selectedApp.id, list.itemAtIndex(1).rowId)
        verify(ringAround(window, list.itemAtIndex(1)))
        keyClick(Qt.Key_Return)
        tryVerify(() => !model.isScanning && model.scanResult.valid, 20000)

        const visited = []
        for (let i = 0; i < 40; ++i) {
            keyClick(Qt.Key_Tab)
            const item = window.activeFocusItem
            verify(item !== null)
            if (visited.indexOf(item) >= 0)
                break
            visited.push(item)
            verify(ringAround(window, item), "focus mark on " + item + " " + (item.text || item.objectName))
        }
        verify(visited.length >= 6, "controls reached: " + visited.length)
        verify(visited.some((item) => { for (let a = item; a; a = a.parent) if (a === list) return true; return false }),
               "the app list is reached")

        model.switchSidebarMode(SidebarMode.Removed)
        tryVerify(() => !model.isScanningOrphans && model.selectedOrphan.valid, 20000)
        const groups = findChild(window.contentItem, "orphanList")
        groups.forceActiveFocus(Qt.TabFocusReason)
        keyClick(Qt.Key_Down)
        compare(model.selectedOrphan.id, groups.itemAtIndex(1).rowId)
        keyClick(Qt.Key_Up)
        compare(model.selectedOrphan.id, groups.itemAtIndex(0).rowId)
    }
}
