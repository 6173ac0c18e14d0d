import QtQuick
import QtQuick.Templates as T
import QtQuick.Controls.impl

T.Button {
    id: control

    // Marks an action that cannot be undone.
    property bool destructive

    readonly property color foreground: !enabled ? Theme.disabledText
                                        : highlighted ? Theme.accentText
                                        : destructive ? Theme.destructive
                                        : Theme.text

    implicitWidth: Math.max(implicitBackgroundWidth, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: Theme.controlHeight
    horizontalPadding: 11
    verticalPadding: 4
    spacing: 6
    font.pixelSize: Theme.bodySize
    font.weight: highlighted ? Font.DemiBold : Font.Normal
    icon.width: 16
    icon.height: 16
    icon.color: foreground
    hoverEnabled: true

    Accessible.name: text

    contentItem: IconLabel {
        spacing: control.spacing
        mirrored: control.mirrored
        display: control.display
        icon: control.icon
        text: control.text
        font: control.font
        color: control.foreground
    }

    background: Rectangle {
        implicitWidth: 72
        radius: Theme.radius
        border.width: control.highlighted && control.enabled ? 0 : 1
        border.color: control.flat ? "transparent" : control.checked ? Theme.accent : Theme.buttonBorder
        opacity: control.enabled ? 1 : 0.6
        color: {
            if (control.highlighted && control.enabled)
                return control.down ? Theme.accentPressed : control.hovered ? Theme.accentHovered : Theme.accent
            if (control.checked)
                return Theme.accentTint
            if (control.flat && !control.down && !control.hovered)
                return "transparent"
            return control.down ? Theme.buttonPressed : control.hovered ? Theme.buttonHovered : Theme.button
        }

        FocusRing {
            shown: control.visualFocus
        }
    }
}
