// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

// Every text the window shows, in each mode, against what is drawn behind it: the background is read
// from the rendered window (the most common colour in the text's box), the text's colour from the item
// with its opacity. Run under the platform's palette and again under a dark desktop scheme.
KestruneTestCase {
    name: "Contrast"

    function channel(v) { return v <= 0.03928 ? v / 12.92 : Math.pow((v + 0.055) / 1.055, 2.4) }
    function luminance(c) { return 0.2126 * channel(c.r) + 0.7152 * channel(c.g) + 0.0722 * channel(c.b) }
    function ratio(a, b) {
        const la = luminance(a), lb = luminance(b)
        return (Math.max(la, lb) + 0.05) / (Math.min(la, lb) + 0.05)
    }
    function over(fg, alpha, bg) {
        return Qt.rgba(fg.r * alpha + bg.r * (1 - alpha), fg.g * alpha + bg.g * (1 - alpha), fg.b * alpha + bg.b * (1 - alpha), 1)
    }

    function isText(item) {
        return typeof item.text === "string" && item.text.length > 0 && item.color !== undefined
            && item.font !== undefined && item.contentWidth !== undefined
            && item.font.family !== "Material Icons"
    }

    // The part of a text's box that shows inside the window and every clipping ancestor.
    function shownBox(item, root) {
        const box = item.mapToItem(root, 0, 0, Math.min(item.width, Math.max(item.contentWidth, 1)), item.height)
        let left = Math.max(box.x, 0), top = Math.max(box.y, 0)
        let right = Math.min(box.x + box.width, root.width), bottom = Math.min(box.y + box.height, root.height)
        for (let a = item.parent; a && a !== root; a = a.parent) {
            if (a.clip) {
                const c = a.mapToItem(root, 0, 0, a.width, a.height)
                left = Math.max(left, c.x); top = Math.max(top, c.y)
                right = Math.min(right, c.x + c.width); bottom = Math.min(bottom, c.y + c.height)
            }
        }
        return { item: item, left: Math.floor(left), top: Math.floor(top), right: Math.floor(right), bottom: Math.floor(bottom) }
    }

    function opacityOf(item) {
        let value = item.color.a
        for (let a = item; a; a = a.parent)
            value *= a.opacity
        return value
    }

    // The most common colour on the rim of the text's box, where glyphs rarely reach; colours are
    // grouped coarsely so that a gradient still has a most common one.
    function backgroundOf(image, box) {
        const groups = {}
        let best = null
        const count = (x, y) => {
            const c = image.pixel(Math.min(Math.max(x, 0), image.width - 1), Math.min(Math.max(y, 0), image.height - 1))
            const key = Math.round(c.r * 24) + "," + Math.round(c.g * 24) + "," + Math.round(c.b * 24)
            const group = groups[key] || (groups[key] = { n: 0, colour: c })
            ++group.n
            if (!best || group.n > best.n)
                best = group
        }
        for (let x = box.left; x < box.right; ++x) { count(x, box.top); count(x, box.bottom - 1) }
        for (let y = box.top; y < box.bottom; ++y) { count(box.left, y); count(box.right - 1, y) }
        return best.colour
    }

    // Fails with every text below 4.5:1, named by its words, colour and background.
    function expectReadable(window, subtree, what) {
        const root = window.contentItem
        waitForRendering(root)
        const image = grabImage(root)
        const texts = collect(subtree, (item) => isText(item) && item.enabled && opacityOf(item) > 0)
            .map((item) => shownBox(item, root)).filter((box) => box.right - box.left >= 4 && box.bottom - box.top >= 4)
        verify(texts.length > 0, what + ": texts found")
        const poor = []
        for (const entry of texts) {
            const background = backgroundOf(image, entry)
            const shown = over(entry.item.color, opacityOf(entry.item), background)
            const value = ratio(shown, background)
            if (value < 4.5)
                poor.push("\"" + entry.item.text.substring(0, 40) + "\" " + shown + " on " + background + ": " + value.toFixed(2))
        }
        compare(poor, [], what)
    }

    // Both modes, in one window with the update banner showing.
    function test_window() {
        compare(AppTheme.isDark, harness.expectsDarkScheme, "the window follows the desktop's scheme")
        const window = openWindow({offeredVersion: "9.0.0"})
        const model = window.viewModel
        expectReadable(window, window.contentItem, "installed mode, nothing scanned")
        const menu = window.menuBar.item.menuAt(0)
        menu.open()
        tryVerify(() => menu.opened)
        expectReadable(window, menu.contentItem.parent, "the menu")
        menu.close()
        tryVerify(() => !menu.visible)
        scan(window, "Zeta Tools.app")
        expectReadable(window, window.contentItem, "installed mode, scanned")

        model.confirmDelete()
        tryVerify(() => window.trashDialog.opened)
        expectReadable(window, window.trashDialog.contentItem.parent, "the alert")
        window.trashDialog.close()
        tryVerify(() => !window.trashDialog.visible)

        // The Trash stand-in refuses every item: the warning banner lists them.
        model.deleteSelectedItems()
        tryVerify(() => !model.isDeleting && model.lastDeletionReport.valid && model.lastDeletionReport.failedCount > 0, 10000)
        expectReadable(window, window.contentItem, "after a refused removal")
        // Now every item moves: the status bar offers Put Back.
        harness.trashMoves = true
        scan(window, "Zeta Tools.app")
        model.deleteSelectedItems()
        tryVerify(() => model.canPutBack, 10000)
        expectReadable(window, findChild(window.contentItem, "statusBar"), "the status bar with Put Back")

        model.showUncertainMatches = true
        mouseClick(findChild(window.contentItem, "modeButton1"))
        tryVerify(() => !model.isScanningOrphans && model.selectedOrphan.valid, 20000)
        expectReadable(window, window.contentItem, "removed mode, first group")
        // A selected row of every grade: the badge sits on the selection.
        const list = findChild(window.contentItem, "orphanList")
        for (let i = 0; i < Math.min(list.count, 12); ++i) {
            list.positionViewAtIndex(i, 0)
            mouseClick(list.itemAtIndex(i))
            expectReadable(window, list, "removed mode, row " + i + " selected")
        }
    }
}
