pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T

T.SpinBox {
    id: control

    // Label that contains the number: "Width: 512". The text before the number is shown in front of the digits.
    property string label
    readonly property string prefix: {
        const place = label.lastIndexOf(displayText)
        return place < 0 ? "" : label.substring(0, place)
    }

    // The symbol of a step button: a plus or a minus, sharp at every scale.
    component StepButton: Rectangle {
        property bool plus
        property bool pressed
        property bool hovered

        width: 26
        radius: Theme.radius
        color: pressed ? Theme.buttonPressed : hovered && enabled ? Theme.buttonHovered : "transparent"

        Rectangle {
            anchors.centerIn: parent
            width: 9
            height: 1.5
            color: parent.enabled ? Theme.text : Theme.disabledText
        }

        Rectangle {
            anchors.centerIn: parent
            visible: parent.plus
            width: 1.5
            height: 9
            color: parent.enabled ? Theme.text : Theme.disabledText
        }
    }

    implicitWidth: 120
    implicitHeight: Theme.controlHeight
    leftPadding: 10
    rightPadding: 58
    editable: true
    font.pixelSize: Theme.bodySize
    hoverEnabled: true

    validator: IntValidator {
        bottom: Math.min(control.from, control.to)
        top: Math.max(control.from, control.to)
    }
    // No thousands separators, as in widths.
    textFromValue: value => String(value)
    // A text without a number keeps the value.
    valueFromText: text => {
        const number = parseInt(text.replace(/[^0-9-]/g, ""))
        return isNaN(number) ? control.value : number
    }

    Accessible.name: label

    TextMetrics {
        id: prefixWidth

        font: control.font
        text: control.prefix
    }

    contentItem: TextInput {
        leftPadding: prefixWidth.advanceWidth
        text: control.displayText
        font: control.font
        color: control.enabled ? Theme.text : Theme.disabledText
        selectionColor: Theme.accent
        selectedTextColor: Theme.accentText
        horizontalAlignment: Qt.AlignLeft
        verticalAlignment: Qt.AlignVCenter
        readOnly: !control.editable
        validator: control.validator
        inputMethodHints: control.inputMethodHints
        selectByMouse: true
        clip: width < implicitWidth

        EditMenu {}

        Text {
            height: parent.height
            text: control.prefix
            font: control.font
            color: control.enabled ? Theme.secondaryText : Theme.disabledText
            verticalAlignment: Text.AlignVCenter
        }
    }

    down.indicator: StepButton {
        x: control.mirrored ? 27 : control.width - 53
        height: control.height
        pressed: control.down.pressed
        hovered: control.down.hovered
        enabled: control.enabled && control.value > control.from
    }

    up.indicator: StepButton {
        x: control.mirrored ? 1 : control.width - 27
        height: control.height
        plus: true
        pressed: control.up.pressed
        hovered: control.up.hovered
        enabled: control.enabled && control.value < control.to
    }

    background: Rectangle {
        radius: Theme.radius
        color: Theme.field
        border.color: control.activeFocus ? Theme.accent : Theme.fieldBorder
        border.width: control.activeFocus ? 2 : 1
        opacity: control.enabled ? 1 : 0.6
    }
}
