// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts
import Kestrune.Core

// Sits on the removed-mode gradient card, so its texts are white.
ColumnLayout {
    id: header
    property orphanGroupValue group
    spacing: 12
    RowLayout {
        Layout.fillWidth: true
        spacing: 10
        Text {
            objectName: "groupName"
            Layout.maximumWidth: header.width - badge.implicitWidth - 10
            text: header.group ? header.group.displayName : ""
            font.pixelSize: AppTheme.title2; font.bold: true
            color: "white"
            horizontalAlignment: Text.AlignLeft
            elide: Text.ElideRight
            maximumLineCount: 1
        }
        // The grade colours are made for a card; on the gradient they get one underneath.
        Rectangle {
            id: badge
            implicitWidth: confidenceBadge.implicitWidth
            implicitHeight: confidenceBadge.implicitHeight
            radius: height / 2
            color: AppTheme.cardBackground
            ConfidenceBadge {
                id: confidenceBadge
                anchors.fill: parent
                confidence: header.group ? header.group.confidence : ""
            }
        }
        Item { Layout.fillWidth: true }
    }
    Text {
        Layout.fillWidth: true
        text: header.group ? header.group.evidenceSummary : ""
        font.pixelSize: AppTheme.subheadline
        color: Qt.rgba(1, 1, 1, 0.94)
        wrapMode: Text.Wrap
        maximumLineCount: 3
        elide: Text.ElideRight
    }
    Text {
        Layout.fillWidth: true
        text: "No matching app in /Applications. Delete only if you recognize this app."
        font.pixelSize: AppTheme.caption
        color: Qt.rgba(1, 1, 1, 0.94)
        wrapMode: Text.Wrap
    }
    Flow {
        Layout.fillWidth: true
        spacing: 10
        StatPill {
            title: "Total size"
            value: header.group ? header.group.formattedSize : ""
            systemImage: "internaldrive"
            onHero: true
        }
        StatPill {
            title: "Items"
            value: header.group ? String(header.group.itemCount) : ""
            systemImage: "doc.on.doc"
            onHero: true
        }
    }
}
