// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts

RowLayout {
    property string title
    property string subtitle
    property string systemImage
    spacing: 12
    Symbol {
        Layout.preferredWidth: 28
        name: systemImage
        size: AppTheme.title3
        color: AppTheme.accent
    }
    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2
        Text {
            Layout.fillWidth: true
            text: title
            font.pixelSize: AppTheme.subheadline; font.weight: Font.DemiBold
            color: AppTheme.primary
            elide: Text.ElideRight
        }
        Text {
            Layout.fillWidth: true
            text: subtitle
            font.pixelSize: AppTheme.caption
            color: AppTheme.secondary
            elide: Text.ElideRight
        }
    }
}
