pragma Singleton

import QtQuick
import ZEBStyle

// Colours and measures that all windows share.
QtObject {
    readonly property bool isDark: ColourScheme.isDark

    readonly property color screen: "#0d0e11"
    readonly property color window: isDark ? "#16181d" : "#f1f2f5"
    readonly property color card: isDark ? "#1f2229" : "#ffffff"
    readonly property color group: isDark ? "#242830" : "#f8f9fb"
    readonly property color cardBorder: isDark ? "#30343d" : "#dfe2e8"
    readonly property color field: isDark ? "#15171c" : "#ffffff"
    readonly property color fieldBorder: isDark ? "#3d424d" : "#c5cad3"
    readonly property color button: isDark ? "#2d313a" : "#ffffff"
    readonly property color buttonHovered: isDark ? "#373c47" : "#f4f5f8"
    readonly property color buttonPressed: isDark ? "#262a32" : "#e6e8ee"
    readonly property color buttonBorder: isDark ? "#454b57" : "#c5cad3"
    readonly property color track: isDark ? "#353a45" : "#d6dae1"
    readonly property color chosen: isDark ? "#596070" : "#ffffff"

    readonly property color text: isDark ? "#eceef2" : "#1b1e25"
    readonly property color secondaryText: isDark ? "#a3aab7" : "#5b6270"
    readonly property color disabledText: isDark ? "#6b7280" : "#9ba2af"

    readonly property color accent: isDark ? "#35c48b" : "#0d7a50"
    readonly property color accentHovered: isDark ? "#4dd29d" : "#0f8a5b"
    readonly property color accentPressed: isDark ? "#2aa876" : "#0a6240"
    readonly property color accentText: isDark ? "#06150e" : "#ffffff"
    readonly property color accentTint: isDark ? "#1e3a30" : "#def3ea"
    readonly property color destructive: isDark ? "#ff6b63" : "#c42b22"
    readonly property color warning: isDark ? "#f3b34c" : "#9a5b00"
    readonly property color focus: isDark ? "#8fe3bf" : "#2c9d70"

    readonly property color toolTip: isDark ? "#3a3f4a" : "#272b33"
    readonly property color toolTipText: "#f6f7f9"

    readonly property int radius: 6
    readonly property int controlHeight: 26

    readonly property int captionSize: 11
    readonly property int calloutSize: 12
    readonly property int bodySize: 13
    readonly property int titleSize: 22
    readonly property string monospaced: "monospace"
}
