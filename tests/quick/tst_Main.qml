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

        compare(window.checkForUpdatesAction.text, "Check for Updates…")
        window.checkForUpdatesAction.trigger()
        tryVerify(() => banner.visible)
        const status = findChild(window.contentItem, "statusBanner")
        verify(status.visible)
        compare(window.viewModel.statusMessage, "Kestrune 9.0.0 is available to download.")
    }

    function test_trashDialogButtons() {
        const window = openWindow("")
        selectAndScan(window, "Zeta")
        const model = window.viewModel
        model.selectAll()
        verify(model.selectedItems.count > 0)
        model.confirmDelete()
        const dialog = window.trashDialog
        tryVerify(() => dialog.opened)
        compare(dialog.title, "Move to Trash?")
        compare(dialog.contentItem.text, "This will move " + model.selectedItems.count + " items ("
                + model.formattedSelectedTotalSize + ") to the Trash. You'll hear a sound when cleanup finishes.")

        // The message follows the selection while the dialog is up.
        model.deselectAll()
        compare(dialog.contentItem.text, "Review the scan results before moving items to the Trash.")
        model.selectAll()

        const runs = harness.trashRuns
        mouseClick(findChild(dialog.footer, "cancelTrashButton"))
        tryVerify(() => !dialog.visible)
        verify(!model.showDeleteConfirmation)
        compare(harness.trashRuns, runs)

        model.confirmDelete()
        tryVerify(() => dialog.opened)
        mouseClick(findChild(dialog.footer, "confirmTrashButton"))
        tryVerify(() => !dialog.visible)
        verify(!model.showDeleteConfirmation)
        tryVerify(() => harness.trashRuns === runs + 1) // after the bundle check, off the main thread
        tryVerify(() => model.lastDeletionReport.valid && !model.isDeleting, 10000)
    }
}
