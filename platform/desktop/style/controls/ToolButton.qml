import QtQuick
import QtQuick.Templates as T
import QtQuick.Controls.impl

T.ToolButton {
    id: control

    readonly property color foreground: !enabled ? Theme.disabledText : checked ? Theme.accent : Theme.text

    implicitWidth: Math.max(implicitBackgroundWidth, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: implicitBackgroundHeight
    padding: 6
    spacing: 5
    font.pixelSize: Theme.bodySize
    icon.width: 18
    icon.height: 18
    icon.color: foreground
    display: T.AbstractButton.IconOnly
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
        implicitWidth: 34
        implicitHeight: 34
        radius: Theme.radius
        color: control.down ? Theme.buttonPressed
               : control.checked ? Theme.accentTint
               : control.hovered && control.enabled ? Theme.buttonHovered
               : "transparent"
        border.width: control.hovered && control.enabled || control.down ? 1 : 0
        border.color: Theme.cardBorder

        FocusRing {
            shown: control.visualFocus
        }
    }
}
