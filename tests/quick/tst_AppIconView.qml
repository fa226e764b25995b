// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

// Icons are asked for by the bundle's file URL, as the rows and the header ask.
KestruneTestCase {
    id: testCase
    name: "AppIconView"
    width: 200; height: 200

    Component { id: iconComponent; AppIconView { size: 64; shadow: false } }

    // The colour in the middle of the lower part of the tile, clear of the icon's white dot.
    function tileColour(source) {
        const icon = createTemporaryObject(iconComponent, testCase, {source: source})
        tryCompare(findChild(icon, "iconImage"), "status", Image.Ready, 5000)
        return grabImage(icon).pixel(32, 52) // grabbing renders the window; nothing to wait for
    }

    function bundle(path) { return "image://appicon/" + encodeURIComponent("file://" + path) }

    function isGrey(colour) {
        return Math.abs(colour.r - colour.g) < 0.03 && Math.abs(colour.g - colour.b) < 0.03 && colour.a > 0.9
    }

    function test_programIconComesFromTheBuiltInPicture() {
        const colour = tileColour("image://appicon/self")
        verify(colour.a > 0.9)
        verify(colour.b > colour.r, "the icon's teal tile")
    }

    function test_bundleIconIsReadFromItsIcns() {
        const colour = tileColour(bundle(harness.applicationPath("Zeta Tools.app")))
        verify(!isGrey(colour), "the bundle's purple icon, not the stand-in: " + colour)
        verify(colour.b > colour.g)
    }

    // A pipe named as the icon would block a plain read for ever.
    function test_unreadableIconsFallBackToTheGenericApp_data() {
        return [{tag: "corrupt icns", path: harness.applicationPath("Café Über.app")},
                {tag: "no icon named", path: harness.applicationPath("Go.app")},
                {tag: "no such bundle", path: harness.applicationPath("Gone.app")},
                {tag: "piped icon", path: harness.bundleWithPipedIcon()}]
    }
    function test_unreadableIconsFallBackToTheGenericApp(data) {
        verify(isGrey(tileColour(bundle(data.path))))
    }
}
