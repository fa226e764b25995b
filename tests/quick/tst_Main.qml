// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

TestCase {
    id: testCase
    name: "Main"
    when: windowShown

    Component { id: windowComponent; Main {} }

    function openWindow(offeredVersion) {
        harness.offeredVersion = offeredVersion
        const window = createTemporaryObject(windowComponent, null, {viewModel: harness.newViewModel()})
        tryVerify(() => !window.viewModel.isLoadingApps && window.viewModel.apps.count > 0, 10000)
        // Keys reach only the active window's focused item.
        window.requestActivate()
        tryVerify(() => window.active)
        return window
    }

    function selectAndScan(window, search) {
        const model = window.viewModel
        model.searchText = search
        const list = findChild(window.contentItem, "appList")
        tryCompare(list, "count", 1)
        mouseClick(list.itemAtIndex(0))
        model.scanSelectedApp()
        tryVerify(() => !model.isScanning && model.scanResult.valid, 20000)
    }

    function test_updateBannerButtonsAndMenuCommand() {
        const window = openWindow("9.0.0")
        const banner = findChild(window.contentItem, "updateBanner")
        verify(!findChild(window.contentItem, "statusBanner").visible)
        tryVerify(() => banner.visible)
        mouseClick(findChild(banner, "downloadButton"))
        compare(harness.lastOpenedUrl, "https://example.com/kestrune.dmg")
        verify(banner.visible)

        mouseClick(findChild(banner, "laterButton"))
        verify(!banner.visible)
        verify(!window.viewModel.availableUpdate.valid)

        window.checkForUpdatesAction.trigger()
        tryVerify(() => banner.visible)
        const status = findChild(window.contentItem, "statusBanner")
        verify(status.visible)
        compare(window.viewModel.statusMessage, "Kestrune 9.0.0 is available to download.")
    }

    // The message follows the selection while the alert is up; its wording is tst_appviewmodel's.
    function test_trashDialogFollowsTheSelection() {
        const window = openWindow("")
        selectAndScan(window, "Zeta")
        const model = window.viewModel
        model.selectAll()
        model.confirmDelete()
        tryVerify(() => window.trashDialog.opened)
        compare(window.trashDialog.contentItem.text, model.trashConfirmationText)
        const before = model.trashConfirmationText
        model.deselectAll()
        verify(model.trashConfirmationText !== before)
        compare(window.trashDialog.contentItem.text, model.trashConfirmationText)
    }

    // After a removal the status bar offers Put Back until it is used.
    function test_putBack() {
        harness.trashMoves = true
        const window = openWindow("")
        selectAndScan(window, "Zeta")
        const model = window.viewModel
        const button = findChild(window.contentItem, "putBackButton")
        verify(!button.visible)
        model.selectAll()
        const count = model.selectedItems.count
        model.deleteSelectedItems()
        tryVerify(() => !model.isDeleting && button.visible, 10000)
        harness.trashMoves = false
        const runs = harness.putBackRuns
        mouseClick(button)
        compare(harness.putBackRuns, runs + 1)
        tryCompare(model, "statusMessage", "Put back " + count + " items.")
        verify(!button.visible)
    }

    // True when a shown focus ring surrounds the item's centre.
    function ringAround(window, item) {
        let root = window.contentItem
        while (root.parent)
            root = root.parent
        const centre = item.mapToItem(root, item.width / 2, item.height / 2)
        const rings = []
        const collect = (node) => {
            if (!node || !node.visible)
                return
            if (node.objectName === "focusRing")
                rings.push(node)
            for (let i = 0; i < node.children.length; ++i)
                collect(node.children[i])
        }
        collect(root)
        return rings.some((ring) => {
            const box = ring.mapToItem(root, 0, 0, ring.width, ring.height)
            return centre.x >= box.x && centre.x <= box.x + box.width && centre.y >= box.y && centre.y <= box.y + box.height
        })
    }

    // Each key that can press a button, in a freshly opened alert, presses Cancel; Escape cancels too.
    // The buttons are pressed only by key here: a click and a key press reach the same handler.
    // The destructive button is reached by Tab, shows its focus, and is forgotten at the next opening.
    function test_alertKeys() {
        const window = openWindow("")
        selectAndScan(window, "Zeta")
        const model = window.viewModel
        const dialog = window.trashDialog
        const cancel = findChild(dialog.footer, "cancelTrashButton")
        const confirm = findChild(dialog.footer, "confirmTrashButton")
        const runs = harness.trashRuns
        for (const key of [Qt.Key_Space, Qt.Key_Return, Qt.Key_Enter, Qt.Key_Escape]) {
            model.confirmDelete()
            tryVerify(() => dialog.opened)
            verify(cancel.activeFocus, "Cancel has the focus, key " + key)
            verify(ringAround(window, cancel), "Cancel shows its focus")
            verify(!ringAround(window, confirm))
            harness.keyClick(window, key)
            tryVerify(() => !dialog.visible)
            verify(!model.showDeleteConfirmation)
            compare(harness.trashRuns, runs, "key " + key + " moved nothing")
        }

        model.confirmDelete()
        tryVerify(() => dialog.opened)
        harness.keyClick(window, Qt.Key_Tab)
        verify(confirm.activeFocus && ringAround(window, confirm) && !ringAround(window, cancel))
        harness.keyClick(window, Qt.Key_Escape)
        tryVerify(() => !dialog.visible)
        model.confirmDelete()
        tryVerify(() => dialog.opened)
        verify(cancel.activeFocus, "the focus is not remembered between openings")
        harness.keyClick(window, Qt.Key_Tab)
        harness.keyClick(window, Qt.Key_Return)
        tryVerify(() => !dialog.visible)
        verify(!model.showDeleteConfirmation)
        tryCompare(harness, "trashRuns", runs + 1)
    }

    // Tab visits every control of the window, each visibly marked when it has the focus.
    function test_everyFocusIsVisible() {
        const window = openWindow("")
        selectAndScan(window, "Zeta")
        window.viewModel.searchText = ""
        const visited = []
        for (let i = 0; i < 40; ++i) {
            harness.keyClick(window, Qt.Key_Tab)
            const item = window.activeFocusItem
            verify(item !== null)
            if (visited.indexOf(item) >= 0)
                break
            visited.push(item)
            verify(ringAround(window, item), "focus mark on " + item + " " + (item.text || item.objectName))
        }
        verify(visited.length >= 6, "controls reached: " + visited.length)
        const list = findChild(window.contentItem, "appList")
        verify(visited.some((item) => { for (let a = item; a; a = a.parent) if (a === list) return true; return false }),
               "the app list is reached")
    }

    // Keyboard only: the arrow keys walk the app list, Return scans the selected app; in the removed
    // mode they walk the groups.
    function test_sidebarKeys() {
        const window = openWindow("")
        const model = window.viewModel
        const list = findChild(window.contentItem, "appList")
        list.forceActiveFocus(Qt.TabFocusReason)
        compare(model.selectedApp.id, model.apps.count > 0 ? list.itemAtIndex(0).rowId : "")
        harness.keyClick(window, Qt.Key_Down)
        compare(model.selectedApp.id, list.itemAtIndex(1).rowId)
        harness.keyClick(window, Qt.Key_Down)
        harness.keyClick(window, Qt.Key_Up)
        compare(model.selectedApp.id, list.itemAtIndex(1).rowId)
        verify(ringAround(window, list.itemAtIndex(1)))
        harness.keyClick(window, Qt.Key_Return)
        tryVerify(() => !model.isScanning && model.scanResult.valid, 20000)

        model.switchSidebarMode(SidebarMode.Removed)
        tryVerify(() => !model.isScanningOrphans && model.selectedOrphan.valid, 20000)
        const groups = findChild(window.contentItem, "orphanList")
        groups.forceActiveFocus(Qt.TabFocusReason)
        harness.keyClick(window, Qt.Key_Down)
        compare(model.selectedOrphan.id, groups.itemAtIndex(1).rowId)
        harness.keyClick(window, Qt.Key_Up)
        compare(model.selectedOrphan.id, groups.itemAtIndex(0).rowId)
    }
}
