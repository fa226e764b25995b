// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

Item {
    id: root
    width: 640; height: 420

    Component {
        id: zoneComponent
        AppDropZoneView {
            id: zone
            width: 560
            property AppViewModel viewModel
            isProcessing: viewModel.isDropProcessing
            onAppDropped: (url) => viewModel.handleDroppedApp(url)
        }
    }

    TestCase {
        name: "AppDropZoneView"
        when: windowShown

        function makeZone(compact) {
            const model = harness.newViewModel()
            return createTemporaryObject(zoneComponent, root, {viewModel: model, compact: compact})
        }

        // Real drag events through the window, as another program's drag arrives.
        function test_realDragOfAnApp() {
            const zone = makeZone(false)
            const target = findChild(zone, "dropTarget")
            verify(!zone.isTargeted)
            verify(harness.dragOver(target, {urls: ["https://example.com/page", harness.applicationUrl("Zeta Tools.app"),
                                                    harness.applicationUrl("Brightline.app")]}))
            verify(zone.isTargeted)
            compare(findChild(zone, "dropArea").border.width, 2)
            verify(harness.dropOn(target))
            verify(!zone.isTargeted)
            tryVerify(() => zone.viewModel.selectedApp.valid && zone.viewModel.selectedApp.name === "Zeta Tools", 10000)
        }

        function test_dragLeavingRestoresTheIdleLook() {
            const zone = makeZone(true)
            const target = findChild(zone, "dropTarget")
            verify(harness.dragOver(target, {urls: [harness.applicationUrl("Zeta Tools.app")]}))
            verify(zone.isTargeted)
            harness.dragAway(target)
            verify(!zone.isTargeted)
            compare(findChild(zone, "dropArea").border.width, 0)
            verify(!zone.viewModel.isDropProcessing)
        }

        function test_dragsWithoutAFileUrlAreRefused_data() {
            return [{tag: "text", data: {text: "/Applications/Zeta Tools.app"}},
                    {tag: "image", data: {image: true}},
                    {tag: "web link", data: {urls: ["https://example.com/Zeta.app"], text: "Zeta"}}]
        }
        function test_dragsWithoutAFileUrlAreRefused(data) {
            const zone = makeZone(false)
            const target = findChild(zone, "dropTarget")
            verify(!harness.dragOver(target, data.data))
            verify(!zone.isTargeted)
            verify(!harness.dropOn(target))
            verify(!zone.viewModel.isDropProcessing)
            verify(!zone.viewModel.selectedApp.valid)
        }

        function test_aFileThatIsNoAppIsNamedInTheStatus() {
            const zone = makeZone(false)
            verify(zone.handleDrop([harness.applicationUrl("Zeta Tools.app/Contents/Info.plist")]))
            compare(zone.viewModel.statusMessage, "Please drop a macOS app bundle (.app).")
            verify(!zone.viewModel.selectedApp.valid)
        }
    }
}
