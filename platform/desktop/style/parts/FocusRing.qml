import QtQuick

// The frame around the control with the keyboard focus.
Rectangle {
    property bool shown

    anchors.fill: parent
    anchors.margins: -3
    visible: shown
    color: "transparent"
    border.color: Theme.focus
    border.width: 2
    radius: Theme.radius + 3
}
