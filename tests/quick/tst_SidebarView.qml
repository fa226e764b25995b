// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

KestruneTestCase {
    id: testCase
    name: "SidebarView"
    width: 340; height: 900

    Component { id: sidebarComponent; SidebarView { width: 320; height: 880 } }
    Component { id: appRowComponent; AppRowView {} }
    Component { id: orphanRowComponent; OrphanedAppRowView {} }

    function test_searchSelectionAndModes() {
        const sidebar = makeView(sidebarComponent)
        const model = sidebar.viewModel
        const list = findChild(sidebar, "appList")
        const count = findChild(sidebar, "countText")
        verify(list.visible)
        compare(count.text, model.shownAppsText)
        mouseClick(findChild(sidebar, "searchInput"))
        keyClick(Qt.Key_Z); keyClick(Qt.Key_E); keyClick(Qt.Key_T)
        tryCompare(model, "searchText", "zet")
        tryCompare(list, "count", 1)
        compare(count.text, model.shownAppsText)
        mouseClick(list.itemAtIndex(0))
        compare(model.selectedApp.name, "Zeta Tools")
        verify(list.itemAtIndex(0).highlighted)

        model.searchText = "no such app"
        tryVerify(() => named(sidebar, "noApps").length === 1)
        verify(!list.visible)

        // The removed mode shows each grade on request, in a colour of its own (which colour is the
        // theme's table).
        mouseClick(findChild(sidebar, "modeButton1"))
        compare(model.sidebarMode, SidebarMode.Removed)
        tryVerify(() => !model.isScanningOrphans && model.orphanedGroups.count > 0, 20000)
        const groups = findChild(sidebar, "orphanList")
        tryVerify(() => groups.visible)
        const grades = () => {
            const seen = {}
            for (let i = 0; i < groups.count; ++i) {
                groups.currentIndex = i
                const tag = findChild(groups.currentItem, "gradeTag")
                seen[tag.text] = tag.color
            }
            return seen
        }
        verify(grades()["Low"] === undefined)
        mouseClick(findChild(sidebar, "uncertainToggle"))
        verify(model.showUncertainMatches)
        tryVerify(() => Object.keys(grades()).length === 3)
        const shown = grades()
        compare(Object.keys(shown).sort(), ["High", "Low", "Med"])
        verify(!Qt.colorEqual(shown["High"], shown["Med"]) && !Qt.colorEqual(shown["Med"], shown["Low"]), "a colour of its own")

        mouseClick(findChild(sidebar, "modeButton0"))
        compare(model.sidebarMode, SidebarMode.Installed)
        verify(findChild(sidebar, "appList") !== null)
    }

    function test_thousandsOfAppsBuildOnlyTheRowsInView() {
        const list = findChild(makeView(sidebarComponent, {syntheticApps: 5000}), "appList")
        tryCompare(list, "count", 5000)
        verify(list.contentItem.children.length < 60, list.contentItem.children.length + " rows built")
        list.positionViewAtEnd()
        waitForRendering(list)
        verify(list.itemAtIndex(4999) !== null)
        verify(list.itemAtIndex(0) === null)
        verify(list.contentItem.children.length < 60)
    }

    // How each script elides is Qt's; that the rows elide at all is theirs.
    function test_longNamesElideInsideTheRow() {
        const wide = "Ä".repeat(300)
        const row = createTemporaryObject(appRowComponent, testCase, {name: wide, formattedSize: "1 KB", width: 288})
        const name = findChild(row, "rowName")
        verify(name.truncated)
        compare(name.lineCount, 1)
        verify(name.x + name.width <= row.width)
        const badgeRow = createTemporaryObject(orphanRowComponent, testCase,
                                               {displayName: wide, summary: "3 items • 1 KB",
                                                grade: "medium", gradeTag: "Med", width: 288})
        verify(findChild(badgeRow, "rowName").truncated)
        verify(findChild(badgeRow, "gradeTag").visible)
    }
}
