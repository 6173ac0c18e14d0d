import QtQuick
import QtQuick.Templates as T

T.MenuItem {
    id: control

    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: 26
    horizontalPadding: 10
    font.pixelSize: Theme.bodySize

    contentItem: Item {
        implicitWidth: label.implicitWidth + (shortcut.text ? shortcut.implicitWidth + 28 : 0)
        implicitHeight: label.implicitHeight

        Text {
            id: label

            anchors.left: parent.left
            anchors.right: shortcut.left
            anchors.verticalCenter: parent.verticalCenter
            text: control.text
            font: control.font
            elide: Text.ElideRight
            color: !control.enabled ? Theme.disabledText : control.highlighted ? Theme.accentText : Theme.text
        }

        Text {
            id: shortcut

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            text: control.action?.shortcut ?? ""
            font.pixelSize: Theme.calloutSize
            color: control.highlighted ? Theme.accentText : Theme.secondaryText
        }
    }

    background: Rectangle {
        radius: 4
        color: control.highlighted ? Theme.accent : "transparent"
    }
}
