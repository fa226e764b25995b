// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

Item {
    id: root
    width: 900; height: 200

    Component { id: bannerComponent; UpdateBanner { width: 880 } }

    TestCase {
        name: "UpdateBanner"
        when: windowShown

        // Its buttons are driven through the window in tst_Main.
        function makeBanner(notes) {
            return createTemporaryObject(bannerComponent, root, {update: harness.update("2.1.0", notes)})
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
    }
}
