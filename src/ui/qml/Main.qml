// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrune
import Kestrune.Core

ApplicationWindow {
    id: window
    required property AppViewModel viewModel
    width: 1180
    height: 760
    minimumWidth: 980
    minimumHeight: 640
    visible: true
    title: "Kestrune"
    color: AppTheme.sidebarBackground
    // The controls' own colours follow the desktop's palette, light or dark, as the views' do.
    palette.window: AppTheme.palette.window
    palette.windowText: AppTheme.primary
    palette.base: AppTheme.palette.base
    palette.alternateBase: AppTheme.palette.alternateBase
    palette.text: AppTheme.palette.text
    palette.button: AppTheme.palette.button
    palette.buttonText: AppTheme.palette.buttonText
    palette.light: AppTheme.palette.light
    palette.midlight: AppTheme.palette.midlight
    palette.mid: AppTheme.palette.mid
    palette.dark: AppTheme.palette.dark
    palette.shadow: AppTheme.palette.shadow
    palette.toolTipBase: AppTheme.palette.base
    palette.toolTipText: AppTheme.palette.text
    palette.placeholderText: AppTheme.secondary
    palette.highlight: AppTheme.accentFill
    palette.highlightedText: "white"
    // Reached by the tests, which cannot find popups and actions by name.
    readonly property Action checkForUpdatesAction: updatesAction
    readonly property Dialog trashDialog: trashConfirmation

    // A Mac gets the program's menus in the screen's menu bar (set up by the program); Qt 6.4-6.7
    // would draw this one inside the window there.
    readonly property bool nativeMenuBar: Qt.platform.os === "osx"

    Action { id: aboutAction; text: "About Kestrune"; onTriggered: aboutDialog.open() }
    Action { id: updatesAction; text: "Check for Updates…"; onTriggered: window.viewModel.checkForUpdates(true) }
    Action { id: closeAction; text: "Close Window"; shortcut: window.nativeMenuBar ? "" : StandardKey.Close; onTriggered: window.close() }
    Action { id: quitAction; text: "Quit Kestrune"; shortcut: window.nativeMenuBar ? "" : StandardKey.Quit; onTriggered: Qt.quit() }

    menuBar: Loader {
        active: !window.nativeMenuBar
        sourceComponent: MenuBar {
            Menu {
                title: "Kestrune"
                MenuItem { action: aboutAction }
                MenuItem { action: updatesAction }
                MenuSeparator {}
                MenuItem { action: closeAction }
                MenuItem { action: quitAction }
            }
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
        // The nearest Qt twin of a balanced split view: widening the sidebar narrows the detail pane.
        SplitView {
            Layout.fillWidth: true; Layout.fillHeight: true
            handle: Item {
                implicitWidth: 6
                Rectangle { anchors.horizontalCenter: parent.horizontalCenter; width: 1; height: parent.height; color: AppTheme.subtleBorder }
            }
            SidebarView {
                viewModel: window.viewModel
                SplitView.preferredWidth: 320; SplitView.minimumWidth: 300; SplitView.maximumWidth: 480
            }
            ScanDetailView {
                SplitView.fillWidth: true
                viewModel: window.viewModel
            }
        }
        // The status line sits on a bar of its own, as a toolbar would, below the split view.
        Rectangle {
            objectName: "statusBar"
            Layout.fillWidth: true
            visible: window.viewModel.hasStatusMessage || window.viewModel.canPutBack
            implicitHeight: statusBanner.implicitHeight + 20
            color: AppTheme.barBackground
            Rectangle { width: parent.width; height: 1; color: AppTheme.subtleBorder }
            Rectangle {
                id: statusBanner
                objectName: "statusBanner"
                anchors.fill: parent
                anchors.leftMargin: 20; anchors.rightMargin: 20; anchors.topMargin: 10; anchors.bottomMargin: 10
                implicitHeight: statusRow.implicitHeight + 28
                radius: AppTheme.cornerRadiusMedium
                color: Qt.rgba(AppTheme.accent.r, AppTheme.accent.g, AppTheme.accent.b, 0.08)
                RowLayout {
                    id: statusRow
                    anchors.fill: parent; anchors.margins: 14
                    spacing: 10
                    Symbol { name: "info.circle.fill"; color: AppTheme.accent }
                    Text { Layout.fillWidth: true; text: window.viewModel.statusMessage; font.pixelSize: AppTheme.subheadline; color: AppTheme.secondary; elide: Text.ElideRight }
                    DetailButton {
                        objectName: "putBackButton"
                        visible: window.viewModel.canPutBack
                        enabled: !window.viewModel.isPuttingBack && !window.viewModel.isDeleting
                        symbol: "arrow.uturn.backward"
                        text: "Put Back"
                        onClicked: window.viewModel.putBackLastRemoval()
                    }
                    DetailButton {
                        objectName: "fullDiskAccessButton"
                        visible: window.viewModel.offersFullDiskAccess
                        text: "Open Privacy & Security"
                        onClicked: window.viewModel.openFullDiskAccessSettings()
                    }
                }
            }
        }
    }

    Dialog {
        id: aboutDialog
        anchors.centerIn: parent
        modal: true
        padding: 24
        background: Rectangle { radius: AppTheme.cornerRadiusMedium; color: AppTheme.cardBackground; border.color: AppTheme.subtleBorder }
        contentItem: ColumnLayout {
            spacing: 8
            AppIconView { Layout.alignment: Qt.AlignHCenter; size: 64; cornerRadius: 14 }
            Text { Layout.alignment: Qt.AlignHCenter; text: "Kestrune"; font.pixelSize: AppTheme.title3; font.weight: Font.Bold; color: AppTheme.primary }
            Text { Layout.alignment: Qt.AlignHCenter; text: "Version " + Qt.application.version; font.pixelSize: AppTheme.caption; color: AppTheme.secondary }
        }
    }

    Dialog {
        id: trashConfirmation
        objectName: "trashDialog"
        anchors.centerIn: parent
        // A fixed width: the wrapped message would otherwise size the dialog from its own width.
        width: 420
        modal: true
        padding: 20
        topPadding: 6
        title: "Move to Trash?"
        Overlay.modal: Rectangle { color: Qt.rgba(0, 0, 0, 0.28) }
        background: Rectangle {
            radius: AppTheme.cornerRadiusMedium
            color: AppTheme.cardBackground
            border.color: AppTheme.subtleBorder
        }
        header: Text {
            text: trashConfirmation.title
            padding: 20; bottomPadding: 0
            font.pixelSize: AppTheme.headline + 2; font.weight: Font.Bold
            color: AppTheme.primary
        }
        // Opened and closed from the flag rather than bound to it: closing writes the flag back.
        Connections {
            target: window.viewModel
            function onShowDeleteConfirmationChanged() {
                if (window.viewModel.showDeleteConfirmation)
                    trashConfirmation.open()
                else
                    trashConfirmation.close()
            }
        }
        onClosed: if (window.viewModel.showDeleteConfirmation) window.viewModel.showDeleteConfirmation = false
        // Every opening starts on Cancel, visibly, so Space, Return and Enter cancel as Escape does.
        // Focus kept from the last opening would come back without its mark, so it is dropped first.
        onOpened: {
            confirmTrashButton.focus = false
            cancelTrashButton.focus = false
            cancelTrashButton.forceActiveFocus(Qt.TabFocusReason)
        }
        contentItem: Text {
            objectName: "trashMessage"
            wrapMode: Text.Wrap; color: AppTheme.primary; font.pixelSize: AppTheme.body
            text: window.viewModel.trashConfirmationText
        }
        // Cancel first, the destructive action last, as the alert orders them.
        footer: RowLayout {
            spacing: 8
            Item { Layout.fillWidth: true }
            DetailButton {
                id: cancelTrashButton
                objectName: "cancelTrashButton"
                text: "Cancel"
                Layout.bottomMargin: 20
                onClicked: trashConfirmation.close()
            }
            DetailButton {
                id: confirmTrashButton
                objectName: "confirmTrashButton"
                text: "Move to Trash"
                destructive: true
                // Reached by Tab only: a click elsewhere never leaves it the focused button.
                focusPolicy: Qt.TabFocus
                Layout.rightMargin: 20; Layout.bottomMargin: 20
                onClicked: {
                    window.viewModel.deleteSelectedItems()
                    window.viewModel.showDeleteConfirmation = false
                }
            }
        }
    }
}
