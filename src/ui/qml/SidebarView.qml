// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

Rectangle {
    id: sidebar
    required property var viewModel
    color: AppTheme.sidebarBackground
    ColumnLayout {
        anchors.fill: parent
        anchors.topMargin: 12
        spacing: 0
        BrandHeader { Layout.fillWidth: true; subtitle: "Complete app cleanup for Mac" }
        // Mode 0 is Installed, 1 Removed Apps: the namespace's enumerators do not reach QML here.
        // The segmented picker: a TabBar is Qt Quick's nearest segmented control.
        TabBar {
            id: picker
            objectName: "modePicker"
            Accessible.name: "View"
            Layout.fillWidth: true
            Layout.leftMargin: 16; Layout.rightMargin: 16; Layout.bottomMargin: 12
            currentIndex: sidebar.viewModel.sidebarMode === 0 ? 0 : 1
            Repeater {
                model: [0, 1]
                TabButton {
                    required property var modelData
                    text: sidebar.viewModel.sidebarModeTitle(modelData)
                    onClicked: {
                        sidebar.viewModel.switchSidebarMode(modelData)
                        picker.currentIndex = Qt.binding(() => sidebar.viewModel.sidebarMode === 0 ? 0 : 1)
                    }
                }
            }
        }
        Loader {
            Layout.fillWidth: true; Layout.fillHeight: true
            sourceComponent: sidebar.viewModel.sidebarMode === 0 ? installed : removed
        }
    }
    Component { id: installed; InstalledAppsSidebar { viewModel: sidebar.viewModel } }
    Component { id: removed; RemovedAppsSidebar { viewModel: sidebar.viewModel } }
}
