import QtQuick
import QtQuick.Templates as T

T.Switch {
    id: control

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Theme.controlHeight
    spacing: 8
    font.pixelSize: Theme.bodySize
    hoverEnabled: true

    Accessible.name: text

    indicator: Rectangle {
        x: control.mirrored ? control.width - width : 0
        y: (control.height - height) / 2
        width: 34
        height: 20
        radius: 10
        opacity: control.enabled ? 1 : 0.5
        color: control.checked ? (control.hovered ? Theme.accentHovered : Theme.accent) : Theme.track

        Rectangle {
            x: 2 + control.visualPosition * (parent.width - width - 4)
            y: 2
            width: 16
            height: 16
            radius: 8
            color: "#ffffff"

            Behavior on x {
                enabled: !control.pressed
                NumberAnimation {
                    duration: 90
                }
            }
        }

        FocusRing {
            shown: control.visualFocus
            radius: 13
        }
    }

    contentItem: Text {
        leftPadding: control.mirrored ? 0 : 34 + control.spacing
        rightPadding: control.mirrored ? 34 + control.spacing : 0
        text: control.text
        font: control.font
        color: control.enabled ? Theme.text : Theme.disabledText
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
}
