// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrune

ApplicationWindow {
    id: window
    required property var viewModel
    width: 1180
    height: 760
    minimumWidth: 980
    minimumHeight: 640
    visible: true
    title: "Kestrune"
    color: AppTheme.sidebarBackground
    palette.highlight: AppTheme.accent

    menuBar: MenuBar {
        Menu {
            title: "Kestrune"
            Action { text: "Check for Updates…"; onTriggered: window.viewModel.checkForUpdates(true) }
        }
    }

    Component.onCompleted: {
        viewModel.loadApps()
        viewModel.checkForUpdates(false)
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0
        UpdateBanner {
            objectName: "updateBanner"
            Layout.fillWidth: true
            visible: window.viewModel.availableUpdate.valid
            update: window.viewModel.availableUpdate
            onDownload: window.viewModel.openAvailableUpdateDownload()
            onDismiss: window.viewModel.dismissAvailableUpdate()
        }
        RowLayout {
            Layout.fillWidth: true; Layout.fillHeight: true
            spacing: 0
            SidebarView {
                viewModel: window.viewModel
                Layout.preferredWidth: 320; Layout.minimumWidth: 300; Layout.fillHeight: true
            }
            ScanDetailView {
                Layout.fillWidth: true; Layout.fillHeight: true
                viewModel: window.viewModel
            }
        }
        Rectangle {
            objectName: "statusBanner"
            Layout.fillWidth: true
            Layout.leftMargin: 20; Layout.rightMargin: 20; Layout.topMargin: 10; Layout.bottomMargin: 10
            visible: window.viewModel.statusMessage !== ""
            implicitHeight: statusRow.implicitHeight + 28
            radius: AppTheme.cornerRadiusMedium
            color: Qt.rgba(AppTheme.accent.r, AppTheme.accent.g, AppTheme.accent.b, 0.08)
            RowLayout {
                id: statusRow
                anchors.fill: parent; anchors.margins: 14
                spacing: 10
                Symbol { name: "info.circle.fill"; color: AppTheme.accent }
                Text { Layout.fillWidth: true; text: window.viewModel.statusMessage; font.pixelSize: AppTheme.subheadline; color: AppTheme.secondary; elide: Text.ElideRight }
            }
        }
    }

    Dialog {
        objectName: "trashDialog"
        anchors.centerIn: parent
        modal: true
        title: "Move to Trash?"
        visible: window.viewModel.showDeleteConfirmation
        onClosed: window.viewModel.showDeleteConfirmation = false
        contentItem: Text {
            width: 360; wrapMode: Text.Wrap; color: AppTheme.primary
            text: window.viewModel.selectedItems.count > 0
                  ? "This will move " + window.viewModel.selectedItems.count + " items (" + window.viewModel.formattedSelectedTotalSize + ") to the Trash. You'll hear a sound when cleanup finishes."
                  : "Review the scan results before moving items to the Trash."
        }
        footer: DialogButtonBox {
            Button { text: "Cancel"; DialogButtonBox.buttonRole: DialogButtonBox.RejectRole }
            Button { text: "Move to Trash"; DialogButtonBox.buttonRole: DialogButtonBox.DestructiveRole
                     onClicked: { window.viewModel.deleteSelectedItems(); window.viewModel.showDeleteConfirmation = false } }
        }
    }
}
