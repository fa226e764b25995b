// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrune

Rectangle {
    id: sidebar
    required property var viewModel
    color: AppTheme.sidebarBackground
    ColumnLayout {
        anchors.fill: parent
        anchors.topMargin: 12
        spacing: 0
        BrandHeader { Layout.fillWidth: true; subtitle: "Complete app cleanup for Mac" }
        // The segmented picker: a TabBar is Qt Quick's nearest segmented control.
        TabBar {
            id: picker
            objectName: "modePicker"
            Accessible.name: "View"
            Layout.fillWidth: true
            Layout.leftMargin: 16; Layout.rightMargin: 16; Layout.bottomMargin: 12
            currentIndex: sidebar.viewModel.sidebarMode === SidebarMode.Installed ? 0 : 1
            Repeater {
                model: [SidebarMode.Installed, SidebarMode.Removed]
                TabButton {
                    required property var modelData
                    required property int index
                    objectName: "modeButton" + index
                    text: sidebar.viewModel.sidebarModeTitle(modelData)
                    onClicked: {
                        sidebar.viewModel.switchSidebarMode(modelData)
                        picker.currentIndex = Qt.binding(() => sidebar.viewModel.sidebarMode === SidebarMode.Installed ? 0 : 1)
                    }
                }
            }
        }
        Loader {
            Layout.fillWidth: true; Layout.fillHeight: true
            sourceComponent: sidebar.viewModel.sidebarMode === SidebarMode.Installed ? installed : removed
        }
    }
    Component { id: installed; InstalledAppsSidebar { viewModel: sidebar.viewModel } }
    Component { id: removed; RemovedAppsSidebar { viewModel: sidebar.viewModel } }
}
