import QtQuick
import QtQuick.Templates as T
import ZEBStyle

T.MenuItem {
    id: control

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: 26
    horizontalPadding: 10
    font.pixelSize: Theme.bodySize

    // The menu handles the mouse.
    hoverEnabled: false
    Accessible.name: Texts.plainLabel(control.text)

    contentItem: MenuItemLabel {
        text: control.text
        shortcut: control.action?.shortcut ?? ""
        font: control.font
        enabled: control.enabled
        highlighted: control.highlighted
    }

    background: Rectangle {
        radius: 4
        color: control.highlighted ? Theme.accent : "transparent"
    }
}
