import QtQuick
import QtQuick.Templates as T
import ZEBStyle

T.MenuBarItem {
    id: control

    implicitWidth: implicitContentWidth + 20
    implicitHeight: 29
    font.pixelSize: Theme.bodySize

    Accessible.name: Texts.plainLabel(control.text)

    contentItem: Text {
        text: Texts.styledLabel(control.text)
        textFormat: Text.StyledText
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
