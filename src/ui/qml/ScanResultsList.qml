// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrune.Core

// The scrolling body of a selected app or group: `top` above, then the results, all in one list so
// that only the visible rows of a large scan are ever built. Each category is one card, drawn in
// slices by its section header and its rows. Ticks leave as signals for the detail view to apply.
ListView {
    id: list
    required property AppViewModel viewModel
    property Component topContent
    property bool showIntro: false
    property bool isScanning: false
    signal itemToggled(string id)
    signal categorySelectionRequested(string category, bool isSelected)

    readonly property bool hasResult: viewModel.activeScanResult.valid
    readonly property bool showsItems: !isScanning && hasResult && viewModel.activeScanResult.itemCount > 0
    readonly property bool hasFailures: viewModel.lastDeletionReport.valid && viewModel.lastDeletionReport.failedCount > 0
    readonly property real padding: AppTheme.contentPadding
    // What stands in for the rows: "scanning", "empty", "intro" or nothing.
    readonly property string panel: isScanning ? "scanning"
                                  : hasResult ? (viewModel.activeScanResult.itemCount === 0 ? "empty" : "")
                                  : showIntro ? "intro" : ""

    // A view resting at the top stays there when the part above the rows grows or shrinks (a warning
    // banner, a second row of buttons); the list would otherwise keep its offset and cut the top off.
    property bool restsAtTop: true
    onContentYChanged: restsAtTop = contentY - originY < 2
    Connections {
        target: list.headerItem
        function onHeightChanged() {
            if (list.restsAtTop)
                list.positionViewAtBeginning()
        }
    }

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    model: showsItems ? viewModel.activeItems : null
    ScrollBar.vertical: ScrollBar {}

    header: Column {
        width: list.width
        topPadding: list.padding
        bottomPadding: 20
        spacing: 20
        Loader {
            x: list.padding
            width: parent.width - 2 * list.padding
            sourceComponent: list.topContent
        }
        WarningBanner {
            objectName: "warningBanner"
            x: list.padding
            width: parent.width - 2 * list.padding
            visible: list.hasFailures
            report: list.viewModel.lastDeletionReport
        }
        WarningBanner {
            objectName: "putBackWarningBanner"
            x: list.padding
            width: parent.width - 2 * list.padding
            visible: list.viewModel.lastPutBackReport.valid && list.viewModel.lastPutBackReport.failedCount > 0
            title: "Some items could not be put back"
            report: list.viewModel.lastPutBackReport
        }
    }

    footer: Item {
        width: list.width
        implicitHeight: statePanel.height + list.padding
        Item {
            id: statePanel
            x: list.padding
            width: parent.width - 2 * list.padding
            height: list.panel === "scanning" ? Math.max(220, list.height - list.headerItem.height - list.padding)
                  : list.panel === "empty" ? noFiles.implicitHeight + 40
                  : list.panel === "intro" ? intro.implicitHeight : 0
            LoadingPanel {
                objectName: "scanningPanel"
                anchors.fill: parent
                visible: list.panel === "scanning"
                title: "Scanning Library folders, launch agents, and Spotlight…"
            }
            Placeholder {
                id: noFiles
                objectName: "noFilesPlaceholder"
                anchors.fill: parent
                visible: list.panel === "empty"
                title: "No Related Files Found"
                symbol: "checkmark.circle"
                description: "Nothing related to this app was found."
            }
            IntroPanel {
                id: intro
                objectName: "introPanel"
                width: parent.width
                visible: list.panel === "intro"
            }
        }
    }

    section.property: "category"
    section.criteria: ViewSection.FullString

    delegate: Item {
        id: slot
        required property string id
        required property string name
        required property string path
        required property string category
        required property string formattedSize
        required property bool requiresAdmin
        required property bool isSelected
        required property string owner
        required property string howFound
        required property string spokenName
        required property bool systemLevel
        required property bool opensSection
        required property string sectionSummary
        required property bool sectionAllSelected
        // The last row of a category closes its card and keeps the gap to the next one.
        readonly property bool closesCard: ListView.nextSection !== ListView.section
        readonly property real gapBelow: closesCard && ListView.nextSection !== "" ? 16 : 0
        readonly property real headerHeight: opensSection ? sectionHeader.implicitHeight : 0
        width: list.width
        height: headerHeight + row.implicitHeight + (closesCard ? 6 : 0) + gapBelow

        // Built only where a category starts: most rows never need one.
        Loader {
            id: sectionHeader
            width: parent.width
            active: slot.opensSection
            sourceComponent: CategorySectionHeader {
                category: slot.category
                summary: slot.sectionSummary
                allSelected: slot.sectionAllSelected
                systemLevel: slot.systemLevel
                onSelectionRequested: (isSelected) => list.categorySelectionRequested(slot.category, isSelected)
            }
        }
        CardSlice {
            x: list.padding
            y: slot.headerHeight
            width: parent.width - 2 * list.padding
            height: parent.height - slot.headerHeight - slot.gapBelow
            closesCard: slot.closesCard
        }
        LeftoverRow {
            id: row
            objectName: "leftoverRow"
            x: list.padding + 1
            y: slot.headerHeight
            width: parent.width - 2 * list.padding - 2
            name: slot.name
            path: slot.path
            formattedSize: slot.formattedSize
            requiresAdmin: slot.requiresAdmin
            isSelected: slot.isSelected
            owner: slot.owner
            howFound: slot.howFound
            spokenName: slot.spokenName
            onToggle: list.itemToggled(slot.id)
        }
        Rectangle {
            visible: !slot.closesCard
            x: list.padding + 28
            y: row.y + row.height - 1
            width: parent.width - 2 * list.padding - 28 - 1
            height: 1
            color: Qt.rgba(AppTheme.primary.r, AppTheme.primary.g, AppTheme.primary.b, 0.1)
        }
    }
}
