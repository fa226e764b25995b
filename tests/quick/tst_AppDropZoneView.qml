// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

// Real drag events through the window, as another program's drag arrives. What the state object makes
// of a dropped file is tst_appviewmodel's.
KestruneTestCase {
    name: "AppDropZoneView"
    width: 640; height: 420

    Component {
        id: zoneComponent
        AppDropZoneView {
            width: 560
            property AppViewModel viewModel
            isProcessing: viewModel.isDropProcessing
            onAppDropped: (url) => viewModel.handleDroppedApp(url)
        }
    }

    function appUrl(bundle) { return "file://" + harness.applicationPath(bundle) }

    function test_dragOfAnAppLeavingAndDropped() {
        const zone = makeView(zoneComponent, {}, false)
        const target = findChild(zone, "dropTarget")
        const area = findChild(zone, "dropArea")
        verify(!zone.isTargeted)
        verify(harness.dragOver(target, {urls: [appUrl("Zeta Tools.app")]}))
        verify(zone.isTargeted)
        compare(area.border.width, 2)
        harness.dragAway(target)
        verify(!zone.isTargeted)
        compare(area.border.width, 0)
        verify(!zone.viewModel.isDropProcessing)

        verify(harness.dragOver(target, {urls: ["https://example.com/page", appUrl("Zeta Tools.app"), appUrl("Brightline.app")]}))
        verify(zone.isTargeted)
        verify(harness.dropOn(target))
        verify(!zone.isTargeted)
        tryVerify(() => zone.viewModel.selectedApp.valid && zone.viewModel.selectedApp.name === "Zeta Tools", 10000)
    }

    function test_dragsWithoutAFileUrlAreRefused_data() {
        return [{tag: "text", data: {text: "/Applications/Zeta Tools.app"}},
                {tag: "web link", data: {urls: ["https://example.com/Zeta.app"], text: "Zeta"}}]
    }
    function test_dragsWithoutAFileUrlAreRefused(data) {
        const zone = makeView(zoneComponent, {}, false)
        const target = findChild(zone, "dropTarget")
        verify(!harness.dragOver(target, data.data))
        verify(!zone.isTargeted)
        verify(!harness.dropOn(target))
        verify(!zone.viewModel.isDropProcessing)
        verify(!zone.viewModel.selectedApp.valid)
    }
}
