// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

// Its buttons are driven through the window in tst_Main.
KestruneTestCase {
    id: testCase
    name: "UpdateBanner"
    width: 900; height: 200

    Component { id: bannerComponent; UpdateBanner { width: 880 } }

    function makeBanner(notes) {
        return createTemporaryObject(bannerComponent, testCase, {update: harness.update("2.1.0", notes)})
    }

    function test_notesLine_data() {
        return [{tag: "absent", notes: undefined, shown: "A newer Kestrune build is ready to download."},
                {tag: "empty", notes: "", shown: ""},
                {tag: "present", notes: "Faster scans.", shown: "Faster scans."},
                {tag: "long", notes: "One.\nTwo.\nThree.\nFour.", shown: "One.\nTwo.\nThree.\nFour."}]
    }
    // Long notes stop at two lines.
    function test_notesLine(data) {
        const banner = makeBanner(data.notes)
        compare(findChild(banner, "updateTitle").text, "Update available: v2.1.0")
        const notes = findChild(banner, "updateNotes")
        compare(notes.text, data.shown)
        verify(notes.lineCount <= 2, notes.lineCount + " lines")
    }
}
