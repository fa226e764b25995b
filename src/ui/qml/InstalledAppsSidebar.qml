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
        title: "Installed Apps"
        countText: sidebar.viewModel.shownAppsText
        refreshHelp: "Refresh app list"
        onRefresh: sidebar.viewModel.loadApps()
    }
    SearchField {
        Layout.fillWidth: true
        placeholder: "Search apps"
        text: sidebar.viewModel.searchText
        onEdited: (text) => sidebar.viewModel.searchText = text
    }
    LoadingPanel {
        objectName: "loadingApps"
        visible: sidebar.viewModel.isLoadingApps
        Layout.fillWidth: true; Layout.fillHeight: true
        title: "Loading apps…"
    }
    Placeholder {
        objectName: "noApps"
        visible: !sidebar.viewModel.isLoadingApps && sidebar.viewModel.filteredApps.count === 0
        Layout.fillWidth: true; Layout.fillHeight: true
        title: "No Apps Found"; symbol: "app.dashed"; description: "Try a different search term."
    }
    SidebarList {
        id: list
        objectName: "appList"
        visible: !sidebar.viewModel.isLoadingApps && sidebar.viewModel.filteredApps.count > 0
        Layout.fillWidth: true; Layout.fillHeight: true
        model: sidebar.viewModel.filteredApps
        onRowChosen: (id) => sidebar.viewModel.selectAppById(id)
        onActivated: sidebar.viewModel.scanSelectedApp()
        delegate: SidebarRow {
            id: row
            required property string id
            required property string name
            required property url path
            required property string formattedSize
            rowId: id
            highlighted: sidebar.viewModel.selectedApp.id === id
            contentItem: AppRowView { appPath: row.path.toString(); name: row.name; formattedSize: row.formattedSize }
            onChosen: sidebar.viewModel.selectAppById(id)
        }
    }
}
