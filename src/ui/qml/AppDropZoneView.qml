// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtQuick.Shapes

ColumnLayout {
    id: zone
    property bool compact: false
    // Shows the progress line under the zone while a dropped app is being read.
    property bool isProcessing: false
    readonly property bool isTargeted: dropArea.containsDrag && dropArea.hasFileUrl
    signal appDropped(url url)
    spacing: compact ? 10 : 14

    // The first file URL of a drop, or none; text and images without one are refused.
    function firstFileUrl(urls) {
        for (let i = 0; i < urls.length; ++i) {
            const url = urls[i].toString()
            if (url.startsWith("file:"))
                return urls[i]
        }
        return null
    }
    function handleDrop(urls) {
        const url = firstFileUrl(urls)
        if (url === null)
            return false
        zone.appDropped(url)
        return true
    }

    Rectangle {
        id: area
        objectName: "dropArea"
        Layout.fillWidth: true
        Layout.minimumHeight: compact ? 120 : 180
        implicitHeight: content.implicitHeight + (compact ? 36 : 56)
        radius: AppTheme.cornerRadiusLarge
        color: zone.isTargeted ? Qt.rgba(AppTheme.accent.r, AppTheme.accent.g, AppTheme.accent.b, 0.14)
                               : Qt.rgba(AppTheme.primary.r, AppTheme.primary.g, AppTheme.primary.b, 0.035)
        border.color: AppTheme.accent
        border.width: zone.isTargeted ? 2 : 0
        Behavior on color { ColorAnimation { duration: 200; easing.type: Easing.OutQuad } }

        // Rectangle has no dashed border; a Shape draws the idle 7-on 5-off outline.
        Shape {
            anchors.fill: parent
            visible: !zone.isTargeted
            ShapePath {
                id: dash
                // The 0.08 border is nearly invisible once dashed; a little stronger keeps the outline readable.
                strokeColor: Qt.rgba(AppTheme.primary.r, AppTheme.primary.g, AppTheme.primary.b, 0.18)
                strokeWidth: 1
                strokeStyle: ShapePath.DashLine
                dashPattern: [7, 5]
                fillColor: "transparent"
                readonly property real r: AppTheme.cornerRadiusLarge
                readonly property real w: area.width - 0.5
                readonly property real h: area.height - 0.5
                startX: 0.5 + r; startY: 0.5
                PathLine { x: area.width - 0.5 - dash.r; y: 0.5 }
                PathArc { x: dash.w; y: 0.5 + dash.r; radiusX: dash.r; radiusY: dash.r }
                PathLine { x: dash.w; y: dash.h - dash.r }
                PathArc { x: dash.w - dash.r; y: dash.h; radiusX: dash.r; radiusY: dash.r }
                PathLine { x: 0.5 + dash.r; y: dash.h }
                PathArc { x: 0.5; y: dash.h - dash.r; radiusX: dash.r; radiusY: dash.r }
                PathLine { x: 0.5; y: 0.5 + dash.r }
                PathArc { x: 0.5 + dash.r; y: 0.5; radiusX: dash.r; radiusY: dash.r }
            }
        }

        ColumnLayout {
            id: content
            anchors.centerIn: parent
            width: Math.min(parent.width - (compact ? 36 : 56), compact ? 320 : 420)
            spacing: compact ? 8 : 12
            Symbol {
                Layout.alignment: Qt.AlignHCenter
                name: zone.isTargeted ? "arrow.down.app.fill" : "plus.app.fill"
                size: compact ? 24 : 34
                color: zone.isTargeted ? AppTheme.accent : AppTheme.secondary
                scale: zone.isTargeted ? 1.06 : 1
                Behavior on scale { NumberAnimation { duration: 200; easing.type: Easing.OutQuad } }
            }
            Text {
                objectName: "dropTitle"
                Layout.alignment: Qt.AlignHCenter
                text: compact ? "Drop an app to remove completely" : "Drop an app here"
                font.pixelSize: compact ? AppTheme.subheadline : AppTheme.title3; font.weight: Font.DemiBold
                color: AppTheme.primary
            }
            Text {
                Layout.fillWidth: true
                text: "Drag any .app from Applications or Finder. Kestrune will scan leftovers and prepare a full cleanup."
                font.pixelSize: compact ? AppTheme.caption : AppTheme.subheadline
                color: AppTheme.secondary
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
        }

        DropArea {
            id: dropArea
            objectName: "dropTarget"
            anchors.fill: parent
            // The URLs travel on the event only: DropArea's own drag group has none, so the verdict of
            // the entering event is kept for the hover look.
            property bool hasFileUrl: false
            onEntered: (drag) => {
                hasFileUrl = drag.hasUrls && zone.firstFileUrl(drag.urls) !== null
                if (hasFileUrl)
                    drag.acceptProposedAction()
                else
                    drag.accepted = false
            }
            onExited: hasFileUrl = false
            onDropped: (drop) => {
                hasFileUrl = false
                if (zone.handleDrop(drop.urls))
                    drop.acceptProposedAction()
                else
                    drop.accepted = false
            }
        }
    }

    RowLayout {
        objectName: "dropProgress"
        visible: zone.isProcessing
        spacing: 10
        BusyIndicator { implicitWidth: 18; implicitHeight: 18; running: parent.visible }
        Text { text: "Scanning dropped app…"; font.pixelSize: AppTheme.caption; color: AppTheme.primary }
    }
}
