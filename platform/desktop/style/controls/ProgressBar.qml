import QtQuick
import QtQuick.Templates as T

T.ProgressBar {
    id: control

    implicitWidth: 200
    implicitHeight: 8

    // Qt reports the value to screen readers for sliders only.
    Accessible.description: Math.floor(100 * position) + " %"

    contentItem: Item {
        Rectangle {
            width: control.visualPosition > 0 ? Math.max(parent.height, control.visualPosition * parent.width) : 0
            height: parent.height
            radius: height / 2
            color: Theme.accent
        }
    }

    background: Rectangle {
        radius: height / 2
        color: Theme.track
    }
}
