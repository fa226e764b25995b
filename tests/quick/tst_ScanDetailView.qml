// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

Item {
    id: root
    width: 900; height: 720

    Component { id: detailComponent; ScanDetailView { anchors.fill: parent } }

    TestCase {
        name: "ScanDetailView"
        when: windowShown

        function cleanup() { harness.syntheticItems = -1 }

        function makeDetail(loadApps) {
            const model = harness.newViewModel()
            const detail = createTemporaryObject(detailComponent, root, {viewModel: model})
            if (loadApps) {
                model.loadApps()
                tryVerify(() => !model.isLoadingApps && model.apps.count > 0, 10000)
            }
            return detail
        }

        // Every item below `item` whose objectName is `name`, or whose text is `text`.
        function collect(item, test, found) {
            found = found || []
            if (test(item))
                found.push(item)
            for (let i = 0; i < item.children.length; ++i)
                collect(item.children[i], test, found)
            return found
        }
        function shownText(item, text) {
            return collect(item, (child) => child.text === text && child.visible).length > 0
        }
        function named(item, name) {
            return collect(item, (child) => child.objectName === name && child.visible)
        }

        function selectAndScan(detail, bundle) {
            const model = detail.viewModel
            model.selectAppById(harness.applicationPath(bundle))
            compare(model.selectedApp.name, bundle.replace(".app", ""))
            tryVerify(() => findChild(detail, "scanButton") !== null && findChild(detail, "scanButton").enabled)
            mouseClick(findChild(detail, "scanButton"))
            tryVerify(() => !model.isScanning && model.scanResult.valid, 20000)
            waitForRendering(detail)
        }

        function test_emptyStatesOfBothModes() {
            const detail = makeDetail(false)
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
            const detail = makeDetail(true)
            const model = detail.viewModel
            model.selectAppById(harness.applicationPath("Acme Notes.app"))
            tryVerify(() => named(detail, "introPanel").length === 1)
            verify(!findChild(detail, "selectAllButton").visible)
            verify(!findChild(detail, "deleteButton").visible)

            selectAndScan(detail, "Acme Notes.app")
            verify(named(detail, "introPanel").length === 0)
            verify(findChild(detail, "selectAllButton").visible)

            mouseClick(findChild(detail, "deselectAllButton"))
            compare(model.selectedItems.count, 0)
            verify(!findChild(detail, "deleteButton").visible)

            // A section's box ticks every row of that category and nothing else.
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

        function test_claimedRowsShowTheirOwnerUnticked() {
            const detail = makeDetail(true)
            selectAndScan(detail, "Fork.app")
            const owners = named(detail, "ownerText")
            verify(owners.length > 0, "a row of ForkLift's in view")
            const row = owners.find((text) => text.text === "Belongs to ForkLift")
            verify(row !== undefined)
            let leftoverRow = row
            while (leftoverRow.objectName !== "leftoverRow")
                leftoverRow = leftoverRow.parent
            verify(!leftoverRow.isSelected)
        }

        function test_aScanThatFindsNothing() {
            harness.syntheticItems = 0
            const detail = makeDetail(true)
            selectAndScan(detail, "Go.app")
            tryVerify(() => named(detail, "noFilesPlaceholder").length === 1)
        }

        function test_warningBannerShowsTheFirstFiveFailures() {
            // The bundle itself is among the ticked items, so no rescan follows to clear the report.
            const detail = makeDetail(true)
            const model = detail.viewModel
            selectAndScan(detail, "Acme Notes.app")
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
            harness.syntheticItems = 20000
            const detail = makeDetail(true)
            selectAndScan(detail, "Go.app")
            const list = findChild(detail, "resultsList")
            tryCompare(list, "count", 20000)
            verify(list.contentItem.children.length < 100, list.contentItem.children.length + " delegates built")
            list.positionViewAtEnd()
            waitForRendering(list)
            verify(list.contentItem.children.length < 100)
        }
    }
}
