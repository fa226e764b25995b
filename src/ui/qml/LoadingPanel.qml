// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

Item {
    property string title
    implicitHeight: column.implicitHeight
    ColumnLayout {
        id: column
        anchors.centerIn: parent
        spacing: 12
        BusyIndicator { Layout.alignment: Qt.AlignHCenter; running: visible }
        Text { Layout.alignment: Qt.AlignHCenter; text: title; color: AppTheme.secondary; font.pixelSize: AppTheme.body }
    }
}
