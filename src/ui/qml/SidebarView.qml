// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrune
import Kestrune.Core

Rectangle {
    id: sidebar
    required property AppViewModel viewModel
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
            spacing: 2
            padding: 2
            background: Rectangle {
                radius: 7
                color: Qt.rgba(AppTheme.primary.r, AppTheme.primary.g, AppTheme.primary.b, 0.07)
            }
            Repeater {
                model: [SidebarMode.Installed, SidebarMode.Removed]
                TabButton {
                    required property var modelData
                    required property int index
                    id: segment
                    objectName: "modeButton" + index
                    text: sidebar.viewModel.sidebarModeTitle(modelData)
                    readonly property bool chosen: picker.currentIndex === index
                    contentItem: Text {
                        text: segment.text
                        font.pixelSize: AppTheme.body
                        font.weight: segment.chosen ? Font.DemiBold : Font.Normal
                        color: AppTheme.primary
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                        elide: Text.ElideRight
                    }
                    background: Rectangle {
                        implicitHeight: 24
                        radius: 5
                        color: segment.chosen ? AppTheme.cardBackground : "transparent"
                        border.color: segment.chosen ? AppTheme.subtleBorder : "transparent"
                        FocusRing { shown: segment.visualFocus; anchors.margins: -1; cornerRadius: 5 }
                    }
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
