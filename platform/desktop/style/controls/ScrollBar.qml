import QtQuick
import QtQuick.Templates as T

T.ScrollBar {
    id: control

    implicitWidth: 10
    implicitHeight: 10
    padding: 2
    minimumSize: 0.1
    visible: policy !== T.ScrollBar.AlwaysOff && size < 1

    contentItem: Rectangle {
        implicitWidth: 6
        implicitHeight: 6
        radius: 3
        color: control.pressed || control.hovered ? Theme.secondaryText : Theme.disabledText
        opacity: control.active || control.policy === T.ScrollBar.AlwaysOn ? 0.9 : 0.5
    }
}
