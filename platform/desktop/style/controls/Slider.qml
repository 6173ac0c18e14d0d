import QtQuick
import QtQuick.Templates as T

T.Slider {
    id: control

    implicitWidth: 200
    implicitHeight: 24
    padding: 2

    handle: Rectangle {
        x: control.leftPadding + control.visualPosition * (control.availableWidth - width)
        y: control.topPadding + (control.availableHeight - height) / 2
        implicitWidth: 16
        implicitHeight: 16
        radius: 8
        visible: control.enabled
        color: control.pressed ? Theme.accentPressed : Theme.accent
        border.width: 2
        border.color: Theme.card

        FocusRing {
            shown: control.visualFocus
            radius: 11
        }
    }

    background: Rectangle {
        x: control.leftPadding
        y: control.topPadding + (control.availableHeight - height) / 2
        width: control.availableWidth
        height: 4
        radius: 2
        color: Theme.track

        Rectangle {
            width: control.visualPosition * parent.width
            height: parent.height
            radius: 2
            visible: control.enabled
            color: Theme.accent
        }
    }
}
