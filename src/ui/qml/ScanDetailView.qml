// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtQuick.Shapes
import Kestrune
import Kestrune.Core

// The detail column: what the sidebar's mode and selection call for. It only reads the state object
// and calls its actions.
Item {
    id: detail
    required property AppViewModel viewModel
    readonly property bool installedMode: viewModel.sidebarMode === SidebarMode.Installed

    Shape {
        anchors.fill: parent
        ShapePath {
            strokeColor: "transparent"
            fillGradient: LinearGradient {
                x1: 0; y1: 0; x2: detail.width; y2: detail.height
                GradientStop { position: 0; color: AppTheme.windowBackground }
                GradientStop {
                    position: 0.5
                    color: Qt.rgba(AppTheme.windowBackground.r, AppTheme.windowBackground.g, AppTheme.windowBackground.b, 0.92)
                }
                GradientStop { position: 1; color: Qt.rgba(AppTheme.accent.r, AppTheme.accent.g, AppTheme.accent.b, 0.05) }
            }
            PathLine { x: detail.width; y: 0 }
            PathLine { x: detail.width; y: detail.height }
            PathLine { x: 0; y: detail.height }
            PathLine { x: 0; y: 0 }
        }
    }

    Loader {
        anchors.fill: parent
        sourceComponent: detail.installedMode
                         ? (detail.viewModel.selectedApp.valid ? installedDetail : installedEmptyState)
                         : (detail.viewModel.selectedOrphan.valid ? removedDetail : emptyRemovedState)
    }

    Component {
        id: installedEmptyState
        Item {
            ColumnLayout {
                anchors.centerIn: parent
                width: Math.min(parent.width - 48, 640)
                spacing: 20
                AppIconView { Layout.alignment: Qt.AlignHCenter; size: 72; cornerRadius: 18 }
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 8
                    Text {
                        Layout.fillWidth: true
                        text: "Remove an App Completely"
                        font.pixelSize: AppTheme.title2; font.bold: true
                        color: AppTheme.primary
                        horizontalAlignment: Text.AlignHCenter
                        wrapMode: Text.Wrap
                    }
                    Text {
                        Layout.fillWidth: true
                        text: "Drop an app below or choose one from the sidebar."
                        font.pixelSize: AppTheme.subheadline
                        color: AppTheme.secondary
                        horizontalAlignment: Text.AlignHCenter
                        wrapMode: Text.Wrap
                    }
                }
                AppDropZoneView {
                    Layout.alignment: Qt.AlignHCenter
                    // A layout fills its cell unless told not to.
                    Layout.fillWidth: false
                    Layout.preferredWidth: Math.min(parent.width - 80, 560)
                    isProcessing: detail.viewModel.isDropProcessing
                    onAppDropped: (url) => detail.viewModel.handleDroppedApp(url)
                }
            }
        }
    }

    Component {
        id: emptyRemovedState
        Item {
            ColumnLayout {
                anchors.centerIn: parent
                width: Math.min(parent.width - 48, 480)
                spacing: 12
                Symbol {
                    Layout.alignment: Qt.AlignHCenter
                    name: "clock.arrow.circlepath"
                    size: 52
                    font.weight: Font.Light
                    color: AppTheme.accent
                }
                Text {
                    Layout.fillWidth: true
                    text: "Find Removed App Leftovers"
                    font.pixelSize: AppTheme.title2; font.bold: true
                    color: AppTheme.primary
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.Wrap
                }
                Text {
                    Layout.alignment: Qt.AlignHCenter
                    Layout.maximumWidth: 420
                    Layout.fillWidth: true
                    text: "Scan your Library for files left behind by apps that are no longer installed."
                    font.pixelSize: AppTheme.subheadline
                    color: AppTheme.secondary
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.Wrap
                }
                DetailButton {
                    objectName: "scanLibraryButton"
                    Layout.alignment: Qt.AlignHCenter
                    Layout.topMargin: 4
                    text: "Scan Library"
                    enabled: !detail.viewModel.isScanningOrphans
                    prominent: true
                    large: true
                    onClicked: detail.viewModel.scanForRemovedApps()
                }
            }
        }
    }

    // Spinner for any running work, then the move to the Trash while something is ticked.
    component DeleteControls: RowLayout {
        spacing: 10
        BusyIndicator {
            objectName: "busySpinner"
            visible: detail.viewModel.isScanning || detail.viewModel.isDeleting || detail.viewModel.isScanningOrphans
            running: visible
            implicitWidth: 22; implicitHeight: 22
        }
        DetailButton {
            objectName: "deleteButton"
            visible: detail.viewModel.selectedItems.count > 0
            enabled: !detail.viewModel.isDeleting
            text: detail.viewModel.moveToTrashText
            symbol: "trash"
            destructive: true
            onClicked: detail.viewModel.confirmDelete()
        }
    }

    Component {
        id: installedDetail
        ScanResultsList {
            objectName: "resultsList"
            viewModel: detail.viewModel
            onItemToggled: (id) => detail.viewModel.toggleItemSelection(id)
            onCategorySelectionRequested: (category, isSelected) => detail.viewModel.setCategorySelection(category, isSelected)
            showIntro: true
            isScanning: detail.viewModel.isScanning
            topContent: ColumnLayout {
                spacing: 20
                AppDropZoneView {
                    Layout.fillWidth: true
                    compact: true
                    isProcessing: detail.viewModel.isDropProcessing
                    onAppDropped: (url) => detail.viewModel.handleDroppedApp(url)
                }
                HeroCard {
                    Layout.fillWidth: true
                    InstalledAppHeader {
                        width: parent.width
                        app: detail.viewModel.selectedApp
                        style: InstalledAppHeader.Style.Hero
                    }
                }
                ActionBar {
                    Layout.fillWidth: true
                    DetailButton {
                        objectName: "scanButton"
                        text: "Scan for Leftovers"
                        symbol: "magnifyingglass.circle.fill"
                        prominent: true
                        enabled: !detail.viewModel.isScanning && detail.viewModel.selectedApp.valid
                        onClicked: detail.viewModel.scanSelectedApp()
                    }
                    DetailButton {
                        objectName: "selectAllButton"
                        visible: detail.viewModel.scanResult.valid
                        text: "Select All"
                        onClicked: detail.viewModel.selectAll()
                    }
                    DetailButton {
                        objectName: "deselectAllButton"
                        visible: detail.viewModel.scanResult.valid
                        text: "Deselect All"
                        onClicked: detail.viewModel.deselectAll()
                    }
                    trailing: DeleteControls {}
                }
            }
        }
    }

    Component {
        id: removedDetail
        // The removed mode shows no drop zone and no scanning panel: its scan shows in the sidebar.
        ScanResultsList {
            objectName: "resultsList"
            viewModel: detail.viewModel
            onItemToggled: (id) => detail.viewModel.toggleItemSelection(id)
            onCategorySelectionRequested: (category, isSelected) => detail.viewModel.setCategorySelection(category, isSelected)
            showIntro: false
            isScanning: false
            topContent: ColumnLayout {
                spacing: 20
                HeroCard {
                    Layout.fillWidth: true
                    removed: true
                    RemovedAppHeader {
                        width: parent.width
                        group: detail.viewModel.selectedOrphan
                    }
                }
                ActionBar {
                    Layout.fillWidth: true
                    DetailButton {
                        objectName: "rescanButton"
                        text: "Rescan Library"
                        symbol: "arrow.clockwise.circle.fill"
                        prominent: true
                        enabled: !detail.viewModel.isScanningOrphans
                        onClicked: detail.viewModel.scanForRemovedApps()
                    }
                    DetailButton {
                        objectName: "selectAllButton"
                        visible: detail.viewModel.selectedOrphan.valid
                        text: "Select All"
                        onClicked: detail.viewModel.selectAll()
                    }
                    DetailButton {
                        objectName: "deselectAllButton"
                        visible: detail.viewModel.selectedOrphan.valid
                        text: "Deselect All"
                        onClicked: detail.viewModel.deselectAll()
                    }
                    trailing: DeleteControls {}
                }
            }
        }
    }
}
