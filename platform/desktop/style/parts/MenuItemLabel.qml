import QtQuick
import ZEBStyle

// The label of a menu item and its keyboard shortcut.
Item {
    id: content

    property string text
    property alias font: label.font
    property alias shortcut: keys.text
    property bool highlighted

    implicitWidth: label.implicitWidth + (shortcut === "" ? 0 : keys.implicitWidth + 28)
    implicitHeight: label.implicitHeight

    Text {
        id: label

        anchors.left: parent.left
        anchors.right: keys.left
        anchors.verticalCenter: parent.verticalCenter
        text: Texts.styledLabel(content.text)
        elide: Text.ElideRight
        textFormat: Text.StyledText
        color: !content.enabled ? Theme.disabledText : content.highlighted ? Theme.accentText : Theme.text
    }

    Text {
        id: keys

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        font.pixelSize: Theme.calloutSize
        color: content.highlighted ? Theme.accentText : Theme.secondaryText
    }
}
