// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Layouts

SectionCard {
    implicitHeight: column.implicitHeight + 36
    ColumnLayout {
        id: column
        x: 18; y: 18; width: parent.width - 36
        spacing: 14
        Text {
            text: "What Kestrune scans"
            font.pixelSize: AppTheme.headline; font.weight: Font.DemiBold
            color: AppTheme.primary
        }
        FeatureRow {
            Layout.fillWidth: true
            title: "Application bundle"; subtitle: "The app in /Applications"; systemImage: "app.fill"
        }
        FeatureRow {
            Layout.fillWidth: true
            title: "Library leftovers"; subtitle: "Caches, preferences, containers, logs"; systemImage: "folder.fill"
        }
        FeatureRow {
            Layout.fillWidth: true
            title: "Background hooks"; subtitle: "Launch agents and daemons"; systemImage: "gearshape.2.fill"
        }
        FeatureRow {
            Layout.fillWidth: true
            title: "Spotlight matches"; subtitle: "Files indexed by bundle identifier"; systemImage: "magnifyingglass"
        }
    }
}
