import QtQuick
import QtQuick.Templates as T

T.MenuBarItem {
    id: control

    implicitWidth: implicitContentWidth + 20
    implicitHeight: 29
    font.pixelSize: Theme.bodySize

    contentItem: Text {
        text: control.text.replace("&", "")
        font: control.font
        color: Theme.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }

    background: Rectangle {
        y: 3
        height: 23
        radius: 4
        color: control.highlighted ? Theme.buttonPressed : "transparent"
    }
}
