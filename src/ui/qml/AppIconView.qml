// SPDX-License-Identifier: MIT
import QtQuick

// The program's own icon; `source` can name an app bundle's icon instead.
Item {
    property real size: 42
    property real cornerRadius: 12
    property bool shadow: true
    property string source: "image://appicon/self"
    implicitWidth: size
    implicitHeight: size
    Rectangle {
        // Stands in for the blurred shadow: Qt 6.4 has no cheap drop shadow in Qt Quick itself.
        x: 0; y: 2; width: parent.width; height: parent.height
        radius: cornerRadius
        color: shadow ? Qt.rgba(0, 0, 0, 0.18) : "transparent"
    }
    Rectangle {
        id: clip
        anchors.fill: parent
        radius: cornerRadius
        color: image.status === Image.Ready ? "transparent" : AppTheme.subtleBorder
        clip: true
        Image {
            id: image
            objectName: "iconImage"
            anchors.fill: parent
            source: parent.parent.source
            sourceSize: Qt.size(size * 2, size * 2)
            fillMode: Image.PreserveAspectFit
            smooth: true
            mipmap: true
            asynchronous: true
            cache: false
        }
    }
}
