// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

Item {
    id: root
    width: 900; height: 200

    Component { id: bannerComponent; UpdateBanner { width: 880 } }
    SignalSpy { id: downloads; signalName: "download" }
    SignalSpy { id: dismissals; signalName: "dismiss" }

    TestCase {
        name: "UpdateBanner"
        when: windowShown

        function makeBanner(notes) {
            const banner = createTemporaryObject(bannerComponent, root, {update: harness.update("2.1.0", notes)})
            downloads.clear(); dismissals.clear()
            downloads.target = banner; dismissals.target = banner
            return banner
        }

        function test_notesLine_data() {
            return [{tag: "absent", notes: undefined, shown: "A newer Kestrune build is ready to download."},
                    {tag: "empty", notes: "", shown: ""},
                    {tag: "present", notes: "Faster scans.", shown: "Faster scans."}]
        }
        function test_notesLine(data) {
            const banner = makeBanner(data.notes)
            compare(findChild(banner, "updateTitle").text, "Update available: v2.1.0")
            compare(findChild(banner, "updateNotes").text, data.shown)
        }

        function test_longNotesStopAtTwoLines() {
            const banner = makeBanner("One.\nTwo.\nThree.\nFour.")
            const notes = findChild(banner, "updateNotes")
            compare(notes.lineCount, 2)
            verify(notes.truncated)
        }

        function test_eachButtonCallsItsOwnAction() {
            const banner = makeBanner(undefined)
            mouseClick(findChild(banner, "downloadButton"))
            compare(downloads.count, 1); compare(dismissals.count, 0)
            mouseClick(findChild(banner, "laterButton"))
            compare(downloads.count, 1); compare(dismissals.count, 1)
        }
    }
}
