// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Controls

ApplicationWindow {
    width: 900
    height: 600
    visible: true
    title: "Kestrune"
}
