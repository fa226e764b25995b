// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrune.Core

ColumnLayout {
    id: sidebar
    required property AppViewModel viewModel
    spacing: 0
    SidebarToolbar {
        Layout.fillWidth: true
        title: "Removed Apps"
        countText: sidebar.viewModel.shownOrphansText
        refreshHelp: "Rescan Library for leftovers"
        onRefresh: sidebar.viewModel.scanForRemovedApps()
    }
    SearchField {
        Layout.fillWidth: true
        placeholder: "Search removed apps"
        text: sidebar.viewModel.searchText
        onEdited: (text) => sidebar.viewModel.searchText = text
    }
    SectionCard {
        Layout.fillWidth: true
        Layout.leftMargin: 16; Layout.rightMargin: 16; Layout.bottomMargin: 10
        implicitHeight: toggleColumn.implicitHeight + 16
        ColumnLayout {
            id: toggleColumn
            x: 8; y: 8; width: parent.width - 16
            spacing: 2
            CheckBox {
                id: uncertainToggle
                objectName: "uncertainToggle"
                text: "Show uncertain matches"
                font.pixelSize: AppTheme.caption
                padding: 0
                // The desktop style's box vanishes on a dark card; the same ticks as the result rows.
                indicator: Symbol {
                    x: uncertainToggle.leftPadding
                    anchors.verticalCenter: parent.verticalCenter
                    name: uncertainToggle.checked ? "checkmark.square.fill" : "square"
                    size: 16
                    color: uncertainToggle.checked ? AppTheme.accent : AppTheme.secondary
                    FocusRing { shown: uncertainToggle.visualFocus; anchors.margins: -1; cornerRadius: 3 }
                }
                contentItem: Text {
                    leftPadding: 20
                    text: uncertainToggle.text
                    font: uncertainToggle.font
                    color: AppTheme.primary
                    verticalAlignment: Text.AlignVCenter
                }
                checked: sidebar.viewModel.showUncertainMatches
                onToggled: sidebar.viewModel.showUncertainMatches = checked
            }
            Text {
                Layout.fillWidth: true
                text: "Library files whose app is missing from /Applications."
                font.pixelSize: AppTheme.caption; color: AppTheme.secondary; wrapMode: Text.Wrap
            }
        }
    }
    LoadingPanel {
        objectName: "scanningLibrary"
        visible: sidebar.viewModel.isScanningOrphans
        Layout.fillWidth: true; Layout.fillHeight: true
        title: "Scanning Library…"
    }
    ColumnLayout {
        objectName: "noConfident"
        visible: !sidebar.viewModel.isScanningOrphans && sidebar.viewModel.visibleOrphans.count === 0
        Layout.fillWidth: true; Layout.fillHeight: true
        spacing: 12
        Item { Layout.fillHeight: true }
        Placeholder {
            Layout.fillWidth: true
            title: "No Confident Matches"; symbol: "checkmark.circle"
            description: "No strong leftovers from removed apps were found."
        }
        DetailButton {
            objectName: "scanAgainButton"
            Layout.alignment: Qt.AlignHCenter
            Layout.fillWidth: false
            text: "Scan Again"
            onClicked: sidebar.viewModel.scanForRemovedApps()
        }
        Item { Layout.fillHeight: true }
    }
    Placeholder {
        objectName: "noMatches"
        visible: !sidebar.viewModel.isScanningOrphans && sidebar.viewModel.visibleOrphans.count > 0
                 && sidebar.viewModel.filteredOrphans.count === 0
        Layout.fillWidth: true; Layout.fillHeight: true
        title: "No Matches"; symbol: "magnifyingglass"; description: "Try a different search term."
    }
    SidebarList {
        objectName: "orphanList"
        visible: !sidebar.viewModel.isScanningOrphans && sidebar.viewModel.filteredOrphans.count > 0
        Layout.fillWidth: true; Layout.fillHeight: true
        model: sidebar.viewModel.filteredOrphans
        onRowChosen: (id) => sidebar.viewModel.selectOrphanById(id)
        delegate: SidebarRow {
            id: row
            required property string id
            required property string displayName
            required property string summary
            required property string grade
            required property string gradeTag
            rowId: id
            highlighted: sidebar.viewModel.selectedOrphan.id === id
            contentItem: OrphanedAppRowView {
                displayName: row.displayName; summary: row.summary
                grade: row.grade; gradeTag: row.gradeTag
            }
            onChosen: sidebar.viewModel.selectOrphanById(id)
        }
    }
}
