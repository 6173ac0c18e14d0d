import QtQuick
import QtQuick.Templates as T
import QtQuick.Controls.impl

T.TextField {
    id: control

    implicitWidth: 160
    implicitHeight: Theme.controlHeight
    leftPadding: 9
    rightPadding: 9
    font.pixelSize: Theme.bodySize
    color: enabled ? Theme.text : Theme.disabledText
    placeholderTextColor: Theme.disabledText
    selectionColor: Theme.accent
    selectedTextColor: Theme.accentText
    selectByMouse: true
    verticalAlignment: TextInput.AlignVCenter

    EditMenu {}

    PlaceholderText {
        x: control.leftPadding
        width: control.width - control.leftPadding - control.rightPadding
        height: control.height
        text: control.placeholderText
        font: control.font
        color: control.placeholderTextColor
        verticalAlignment: control.verticalAlignment
        visible: control.text === "" && control.preeditText === ""
        elide: Text.ElideRight
    }

    background: Rectangle {
        radius: Theme.radius
        color: Theme.field
        border.color: control.activeFocus ? Theme.accent : Theme.fieldBorder
        border.width: control.activeFocus ? 2 : 1
        opacity: control.enabled ? 1 : 0.6
    }
}
