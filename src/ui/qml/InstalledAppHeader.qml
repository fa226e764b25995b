// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Kestrune.Core

// An installed app's icon, name, path and figures: `hero` on the gradient card, `plain` on a card.
RowLayout {
    id: header
    enum Style { Hero, Plain }
    property appValue app
    property int style: InstalledAppHeader.Style.Hero
    readonly property bool hero: style === InstalledAppHeader.Style.Hero
    spacing: 16

    Item {
        Layout.alignment: Qt.AlignTop
        implicitWidth: icon.size
        implicitHeight: icon.size
        // A soft shadow 4 below the icon: two widening layers stand in for a blur, which Qt 6.4's
        // Qt Quick lacks.
        Repeater {
            model: [{ spread: 3, alpha: 0.06 }, { spread: 1, alpha: 0.12 }]
            Rectangle {
                required property var modelData
                x: -modelData.spread; y: 4 - modelData.spread
                width: icon.size + 2 * modelData.spread; height: icon.size + 2 * modelData.spread
                radius: 16 + modelData.spread
                color: Qt.rgba(0, 0, 0, modelData.alpha)
            }
        }
        AppIconView {
            id: icon
            size: header.hero ? 72 : 64
            cornerRadius: 16
            shadow: false
            source: header.app && header.app.valid ? "image://appicon/" + encodeURIComponent(header.app.path.toString()) : ""
        }
    }
    ColumnLayout {
        Layout.fillWidth: true
        Layout.alignment: Qt.AlignTop
        spacing: 8
        Text {
            objectName: "appName"
            Layout.fillWidth: true
            text: header.app ? header.app.name : ""
            font.pixelSize: AppTheme.title2; font.bold: true
            color: header.hero ? "white" : AppTheme.primary
            horizontalAlignment: Text.AlignLeft
            elide: Text.ElideRight
            maximumLineCount: 1
        }
        TextEdit {
            objectName: "appPath"
            Layout.fillWidth: true
            text: header.app ? header.app.id : ""
            font.pixelSize: AppTheme.caption
            color: header.hero ? Qt.rgba(1, 1, 1, 0.94) : AppTheme.secondary
            horizontalAlignment: TextEdit.AlignLeft
            wrapMode: TextEdit.Wrap
            readOnly: true
            selectByMouse: true
            selectionColor: header.hero ? Qt.rgba(1, 1, 1, 0.3) : AppTheme.accent
        }
        Flow {
            Layout.fillWidth: true
            spacing: 10
            StatPill {
                title: "Size"
                value: header.app ? header.app.formattedSize : ""
                systemImage: "internaldrive"
                onHero: header.hero
            }
            StatPill {
                visible: !!header.app && header.app.bundleIdentifier !== ""
                title: "Bundle ID"
                value: header.app ? header.app.bundleIdentifier : ""
                systemImage: "barcode"
                onHero: header.hero
            }
        }
    }
}
