// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

Item {
    id: root
    width: 200; height: 200

    Component { id: iconComponent; AppIconView { size: 64; shadow: false } }

    TestCase {
        name: "AppIconView"
        when: windowShown

        // The colour in the middle of the lower part of the tile, clear of the icon's white dot.
        function tileColour(source) {
            const icon = createTemporaryObject(iconComponent, root, {source: source})
            const image = findChild(icon, "iconImage")
            tryCompare(image, "status", Image.Ready, 5000)
            const picture = grabImage(icon) // grabbing renders the window; nothing to wait for
            return picture.pixel(32, 52)
        }

        function bundle(name) {
            return "image://appicon/" + encodeURIComponent(harness.applicationPath(name))
        }

        function isGrey(colour) {
            return Math.abs(colour.r - colour.g) < 0.03 && Math.abs(colour.g - colour.b) < 0.03 && colour.a > 0.9
        }

        function test_programIconComesFromTheBuiltInPicture() {
            const colour = tileColour("image://appicon/self")
            verify(colour.a > 0.9)
            verify(colour.b > colour.r, "the icon's teal tile")
        }

        function test_bundleIconIsReadFromItsIcns_data() {
            const path = harness.applicationPath("Zeta Tools.app")
            return [{tag: "path", source: "image://appicon/" + encodeURIComponent(path)},
                    {tag: "file URL", source: "image://appicon/" + encodeURIComponent("file://" + path)}]
        }
        function test_bundleIconIsReadFromItsIcns(data) {
            const colour = tileColour(data.source)
            verify(!isGrey(colour), "the bundle's purple icon, not the stand-in: " + colour)
            verify(colour.b > colour.g)
        }

        function test_unreadableIconsFallBackToTheGenericApp_data() {
            return [{tag: "corrupt icns", name: "Café Über.app"},
                    {tag: "no icon named", name: "Go.app"},
                    {tag: "no such bundle", name: "Gone.app"}]
        }
        function test_unreadableIconsFallBackToTheGenericApp(data) {
            verify(isGrey(tileColour(bundle(data.name))))
        }

        // A pipe named as the icon would block a plain read for ever.
        function test_aPipedIconIsPassedOver() {
            verify(isGrey(tileColour("image://appicon/" + encodeURIComponent(harness.bundleWithPipedIcon()))))
        }
    }
}
