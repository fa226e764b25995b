// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

Item {
    id: root
    width: 640; height: 420

    Component { id: zoneComponent; AppDropZoneView { width: 560 } }
    // A drag source that carries whatever MIME data a case gives it.
    Component {
        id: dragComponent
        Rectangle {
            width: 20; height: 20
            Drag.dragType: Drag.Internal
            Drag.hotSpot: Qt.point(10, 10)
        }
    }

    TestCase {
        name: "AppDropZoneView"
        when: windowShown

        function makeZone(compact) {
            const model = harness.newViewModel()
            return createTemporaryObject(zoneComponent, root, {viewModel: model, compact: compact})
        }

        function test_titles_data() {
            return [{tag: "full", compact: false, title: "Drop an app here"},
                    {tag: "compact", compact: true, title: "Drop an app to remove completely"}]
        }
        function test_titles(data) {
            const zone = makeZone(data.compact)
            compare(findChild(zone, "dropTitle").text, data.title)
            verify(!findChild(zone, "dropProgress").visible)
        }

        function test_takesTheFirstFileUrl() {
            const zone = makeZone(false)
            verify(zone.handleDrop(["https://example.com/page", harness.applicationUrl("Zeta Tools.app"),
                                    harness.applicationUrl("Brightline.app")]))
            tryVerify(() => zone.viewModel.selectedApp.valid && zone.viewModel.selectedApp.name === "Zeta Tools", 10000)
        }

        function test_refusesDropsWithoutAFileUrl_data() {
            return [{tag: "web link", urls: ["https://example.com/Zeta.app"]}, {tag: "nothing", urls: []}]
        }
        function test_refusesDropsWithoutAFileUrl(data) {
            const zone = makeZone(false)
            verify(!zone.handleDrop(data.urls))
            verify(!zone.viewModel.isDropProcessing)
            verify(!zone.viewModel.selectedApp.valid)
        }

        function test_dragOfTextIsRefused() {
            const zone = makeZone(false)
            const target = findChild(zone, "dropTarget")
            const source = createTemporaryObject(dragComponent, root, {"Drag.mimeData": {"text/plain": "hello"}})
            source.x = zone.width / 2; source.y = 40
            source.Drag.active = true
            verify(!target.containsDrag || !target.hasFileUrl)
            verify(!zone.isTargeted)
            source.Drag.drop()
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
