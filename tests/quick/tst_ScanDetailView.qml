// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

KestruneTestCase {
    name: "ScanDetailView"
    width: 900; height: 720

    Component { id: detailComponent; ScanDetailView { anchors.fill: parent } }

    function shownText(item, text) {
        return collect(item, (child) => child.text === text).length > 0
    }

    function test_emptyStatesOfBothModes() {
        const detail = makeView(detailComponent, {}, false)
        verify(shownText(detail, "Remove an App Completely"))
        verify(shownText(detail, "Drop an app here"), "the full drop zone")

        detail.viewModel.switchSidebarMode(SidebarMode.Removed)
        verify(detail.viewModel.isScanningOrphans)
        verify(shownText(detail, "Find Removed App Leftovers"))
        verify(findChild(detail, "scanLibraryButton").visible)

        tryVerify(() => !detail.viewModel.isScanningOrphans && detail.viewModel.selectedOrphan.valid, 20000)
        tryVerify(() => named(detail, "rescanButton").length === 1)
        verify(findChild(detail, "selectAllButton").visible)
        verify(!shownText(detail, "Drop an app to remove completely"), "no drop zone for removed apps")
        verify(named(detail, "introPanel").length === 0)

        // The removed mode wires its own rows and boxes.
        detail.viewModel.deselectAll()
        mouseClick(named(detail, "categoryToggle")[0])
        tryVerify(() => detail.viewModel.selectedItems.count > 0)
        const ticked = detail.viewModel.selectedItems.count
        mouseClick(named(detail, "leftoverRow")[0])
        compare(detail.viewModel.selectedItems.count, ticked - 1)
    }

    function test_scanSelectAndTick() {
        const detail = makeView(detailComponent)
        const model = detail.viewModel
        model.selectAppById(harness.applicationPath("Acme Notes.app"))
        tryVerify(() => named(detail, "introPanel").length === 1)
        verify(!findChild(detail, "selectAllButton").visible)
        verify(!findChild(detail, "deleteButton").visible)

        tryVerify(() => findChild(detail, "scanButton").enabled)
        mouseClick(findChild(detail, "scanButton"))
        tryVerify(() => !model.isScanning && model.scanResult.valid, 20000)
        waitForRendering(detail)
        verify(named(detail, "introPanel").length === 0)
        verify(findChild(detail, "selectAllButton").visible)

        mouseClick(findChild(detail, "deselectAllButton"))
        compare(model.selectedItems.count, 0)
        verify(!findChild(detail, "deleteButton").visible)

        // A section's box ticks the rows of its own category only.
        const toggles = named(detail, "categoryToggle")
        verify(toggles.length > 1)
        const toggle = toggles[1]
        verify(!toggle.checked)
        mouseClick(toggle)
        tryVerify(() => toggle.checked)
        verify(model.selectedItems.count >= 1)
        verify(model.selectedItems.count < model.activeItems.count)
        mouseClick(toggle)
        tryVerify(() => !toggle.checked)
        compare(model.selectedItems.count, 0)

        mouseClick(named(detail, "leftoverRow")[0])
        compare(model.selectedItems.count, 1)
        const deleteButton = findChild(detail, "deleteButton")
        verify(deleteButton.visible)

        mouseClick(findChild(detail, "selectAllButton"))
        compare(model.selectedItems.count, model.activeItems.count)
        mouseClick(deleteButton)
        verify(model.showDeleteConfirmation)
    }

    function test_aScanThatFindsNothing() {
        const detail = makeView(detailComponent, {syntheticItems: 0})
        scan(detail, "Go.app")
        tryVerify(() => named(detail, "noFilesPlaceholder").length === 1)
    }

    // A row another app owns shows its owner and starts unticked. The Trash stand-in refuses every item;
    // the bundle itself is among them, so no rescan follows to clear the report.
    function test_claimedRowsAndTheFirstFiveFailures() {
        const detail = makeView(detailComponent)
        const model = detail.viewModel
        scan(detail, "Fork.app")
        const owner = named(detail, "ownerText").find((text) => text.text === "Belongs to ForkLift")
        verify(owner !== undefined, "a row of ForkLift's in view")
        let row = owner
        while (row.objectName !== "leftoverRow")
            row = row.parent
        verify(!row.isSelected)

        model.selectAll()
        const ticked = model.selectedItems.count
        verify(ticked > 5)
        verify(named(detail, "warningBanner").length === 0)
        model.deleteSelectedItems()
        tryVerify(() => model.lastDeletionReport.valid && !model.isDeleting, 10000)
        compare(model.lastDeletionReport.failedCount, ticked)
        tryVerify(() => named(detail, "warningBanner").length === 1)
        const lines = named(detail, "failureLine")
        compare(lines.length, 5)
        verify(lines[0].text.endsWith(": Operation not permitted"))
    }

    function test_twentyThousandItemsBuildOnlyTheRowsInView() {
        const detail = makeView(detailComponent, {syntheticItems: 20000})
        scan(detail, "Go.app")
        const list = findChild(detail, "resultsList")
        tryCompare(list, "count", 20000)
        verify(list.contentItem.children.length < 100, list.contentItem.children.length + " delegates built")
        list.positionViewAtEnd()
        waitForRendering(list)
        verify(list.contentItem.children.length < 100)
    }
}
