pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T

T.SpinBox {
    id: control

    // A step button's glyph: a plus or a minus, drawn so that it is sharp at every scale.
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
    leftPadding: 30
    rightPadding: 30
    editable: true
    font.pixelSize: Theme.bodySize
    hoverEnabled: true

    validator: IntValidator {
        bottom: Math.min(control.from, control.to)
        top: Math.max(control.from, control.to)
    }
    // Figures such as widths are written without separators.
    textFromValue: value => String(value)
    valueFromText: text => parseInt(text.replace(/[^0-9-]/g, "")) || 0

    contentItem: TextInput {
        text: control.displayText
        font: control.font
        color: control.enabled ? Theme.text : Theme.disabledText
        selectionColor: Theme.accent
        selectedTextColor: Theme.accentText
        horizontalAlignment: Qt.AlignHCenter
        verticalAlignment: Qt.AlignVCenter
        readOnly: !control.editable
        validator: control.validator
        inputMethodHints: control.inputMethodHints
        selectByMouse: true
        clip: width < implicitWidth
    }

    down.indicator: StepButton {
        x: control.mirrored ? control.width - width : 0
        height: control.height
        pressed: control.down.pressed
        hovered: control.down.hovered
        enabled: control.enabled && control.value > control.from
    }

    up.indicator: StepButton {
        x: control.mirrored ? 0 : control.width - width
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
