// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

// The symbols draw from the icon font the program carries. CTest also runs this file with fontconfig
// shown no icon font at all (tst_quick_iconfont), as on a machine that never installed one.
KestruneTestCase {
    id: testCase
    name: "Symbol"
    width: 200; height: 100

    Component { id: symbolComponent; Symbol { size: 24 } }

    function test_symbolsAreGlyphsNotWords_data() {
        return [{tag: "trash", name: "trash"}, {tag: "info", name: "info.circle.fill"},
                {tag: "download", name: "arrow.down.circle.fill"}]
    }
    // Without the font a ligature draws as its word ("delete", "download_for_offline"), several
    // times wider than one glyph.
    function test_symbolsAreGlyphsNotWords(data) {
        const symbol = createTemporaryObject(symbolComponent, testCase, {name: data.name})
        verify(symbol.text.length > 3, "a ligature name")
        verify(symbol.contentWidth > 12 && symbol.contentWidth <= 30, data.name + " is " + symbol.contentWidth + " wide")
    }
}
