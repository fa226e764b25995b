// SPDX-License-Identifier: MIT
pragma Singleton
import QtQuick

// Colours, radii and the symbol table shared by every view. The dynamic platform colours come from the
// system palette, so light and dark follow the desktop.
QtObject {
    readonly property real cornerRadiusSmall: 12
    readonly property real cornerRadiusMedium: 14
    readonly property real cornerRadiusLarge: 16
    readonly property real contentPadding: 24

    readonly property color accent: Qt.rgba(0.12, 0.62, 0.78, 1)
    readonly property color accentSecondary: Qt.rgba(0.95, 0.42, 0.36, 1)
    readonly property SystemPalette palette: SystemPalette { colorGroup: SystemPalette.Active }
    readonly property bool isDark: palette.window.hslLightness < 0.5
    readonly property color cardBackground: palette.base
    readonly property color sidebarBackground: palette.window
    readonly property color windowBackground: palette.window
    readonly property color primary: palette.windowText
    // Strong enough for 4.5:1 on the window, the cards and a selected row, light and dark.
    readonly property color secondary: Qt.rgba(primary.r, primary.g, primary.b, 0.64)
    // A toolbar's material: the window tinted towards the text colour.
    readonly property color barBackground: Qt.tint(windowBackground, Qt.rgba(primary.r, primary.g, primary.b, 0.04))
    readonly property color subtleBorder: Qt.rgba(primary.r, primary.g, primary.b, 0.08)
    readonly property color green: isDark ? "#32d74b" : "#28a745"
    readonly property color orange: isDark ? "#ff9f0a" : "#f08a00"
    readonly property color gray: "#8e8e93"
    readonly property color red: isDark ? "#ff453a" : "#e0352b"
    // The same hues deep enough (light) or bright enough (dark) for text on tints of themselves.
    readonly property color greenText: isDark ? "#4ee06a" : "#0f5a25"
    readonly property color orangeText: isDark ? "#ffb340" : "#8a4500"
    readonly property color grayText: isDark ? "#c2c2c7" : "#505055"
    readonly property color redText: isDark ? "#ffa39e" : "#b3261e"
    // Filled buttons: the accent deepened until white text on it reads at 4.5:1.
    readonly property color accentFill: Qt.rgba(0.07, 0.45, 0.58, 1)
    // A selected sidebar row: a tint, so every text and badge on it keeps its own colour.
    readonly property color selection: Qt.tint(sidebarBackground, Qt.rgba(accent.r, accent.g, accent.b, 0.2))
    readonly property color focusRing: isDark ? Qt.lighter(accent, 1.25) : accentFill

    // Nearest desktop sizes for the platform's text styles.
    readonly property int title2: 22
    readonly property int title3: 20
    readonly property int headline: 13
    readonly property int body: 13
    readonly property int subheadline: 11
    readonly property int caption: 10
    readonly property int caption2: 10

    function gradientStops(removed) {
        // Deep enough that white text reads at 4.5:1 across the whole card.
        return removed ? [Qt.rgba(0.74, 0.25, 0.2, 1), Qt.rgba(0.66, 0.33, 0.08, 1)]
                       : [accentFill, Qt.rgba(0.08, 0.46, 0.42, 1)]
    }

    // A removed app's grade by its kind, as the groups name it: "high", "medium" or "uncertain".
    readonly property var gradeColors: ({high: green, medium: orange, uncertain: gray})
    readonly property var gradeTextColors: ({high: greenText, medium: orangeText, uncertain: grayText})
    readonly property var gradeTintOpacities: ({high: 0.18, medium: 0.18, uncertain: 0.16})
    function gradeColor(grade) { return gradeColors[grade] !== undefined ? gradeColors[grade] : gray }
    function gradeTextColor(grade) { return gradeTextColors[grade] !== undefined ? gradeTextColors[grade] : grayText }
    function gradeTintOpacity(grade) { return gradeTintOpacities[grade] !== undefined ? gradeTintOpacities[grade] : 0.16 }

    // Platform symbol names drawn with the nearest Material Icons ligature.
    readonly property var symbols: ({
        "arrow.down.circle.fill": "download_for_offline",
        "arrow.down.app.fill": "file_download",
        "plus.app.fill": "add_box",
        "info.circle.fill": "info",
        "arrow.clockwise": "refresh",
        "arrow.clockwise.circle.fill": "autorenew",
        "magnifyingglass": "search",
        "magnifyingglass.circle.fill": "manage_search",
        "app.dashed": "crop_free",
        "app.fill": "apps",
        "checkmark.circle": "check_circle_outline",
        // An app with a checkmark badge: the app glyph, and the badge drawn over its corner.
        "app.badge.checkmark.fill": "apps",
        "checkmark.circle.fill": "check_circle",
        "clock.arrow.circlepath": "history",
        "trash": "delete",
        "internaldrive": "storage",
        "barcode": "qr_code",
        "doc.on.doc": "file_copy",
        "folder.fill": "folder",
        "gearshape.2.fill": "settings",
        "checkmark.square.fill": "check_box",
        "square": "check_box_outline_blank",
        "lock.fill": "lock",
        "arrow.uturn.backward": "undo",
        "exclamationmark.triangle.fill": "warning"
    })
    function glyph(name) { return symbols[name] !== undefined ? symbols[name] : "help_outline" }
}
