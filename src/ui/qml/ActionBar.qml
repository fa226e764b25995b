// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts

// A card row with its controls split to both ends: `leading` and `trailing` take the children. When the
// pane is too narrow for both, the trailing controls move under the leading ones instead of overlapping.
Rectangle {
    id: bar
    default property alias leading: leadingRow.data
    property alias trailing: trailingRow.data
    readonly property bool stacked: leadingRow.implicitWidth + trailingRow.implicitWidth + 12 > width - 28
    implicitHeight: Math.max(grid.implicitHeight, 28) + 28
    radius: AppTheme.cornerRadiusMedium
    color: AppTheme.cardBackground
    border.color: AppTheme.subtleBorder
    border.width: 1
    GridLayout {
        id: grid
        anchors.fill: parent
        anchors.margins: 14
        columns: bar.stacked ? 1 : 3
        columnSpacing: 12
        rowSpacing: 10
        // Each end keeps its natural width while it fits and shrinks only when even a row of its own
        // is too narrow.
        RowLayout {
            id: leadingRow
            Layout.fillWidth: true
            Layout.maximumWidth: implicitWidth
            spacing: 8
        }
        Item {
            visible: !bar.stacked
            Layout.fillWidth: true
        }
        RowLayout {
            id: trailingRow
            Layout.fillWidth: true
            Layout.maximumWidth: implicitWidth
            spacing: 10
        }
    }
}
