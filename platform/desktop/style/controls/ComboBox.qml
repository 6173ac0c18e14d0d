pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import ZEBStyle

T.ComboBox {
    id: control

    implicitWidth: 160
    implicitHeight: Theme.controlHeight
    leftPadding: 10
    rightPadding: 26
    font.pixelSize: Theme.bodySize
    hoverEnabled: true

    delegate: MenuItem {
        required property var model
        required property int index

        width: ListView.view.width
        text: Texts.labelOf(model[control.textRole || "modelData"] ?? "")
        font.weight: control.currentIndex === index ? Font.DemiBold : Font.Normal
        highlighted: control.highlightedIndex === index
        hoverEnabled: control.hoverEnabled
    }

    indicator: Text {
        x: control.width - width - 10
        y: (control.height - height) / 2
        text: "▾"
        font.pixelSize: Theme.bodySize
        color: control.enabled ? Theme.secondaryText : Theme.disabledText
    }

    contentItem: Text {
        text: control.displayText
        font: control.font
        color: control.enabled ? Theme.text : Theme.disabledText
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        textFormat: Text.PlainText
    }

    background: Rectangle {
        radius: Theme.radius
        color: control.down ? Theme.buttonPressed : control.hovered && control.enabled ? Theme.buttonHovered : Theme.button
        border.color: Theme.buttonBorder
        opacity: control.enabled ? 1 : 0.6

        FocusRing {
            shown: control.visualFocus
        }
    }

    popup: T.Popup {
        y: control.height + 2
        width: Math.max(control.width, 120)
        height: Math.min(contentItem.implicitHeight + 8, control.Window.height - 8)
        margins: 4
        padding: 4

        contentItem: ListView {
            clip: true
            implicitHeight: contentHeight
            model: control.delegateModel
            currentIndex: control.highlightedIndex
            boundsBehavior: Flickable.StopAtBounds

            T.ScrollBar.vertical: ScrollBar {}
        }

        background: Rectangle {
            radius: Theme.radius
            color: Theme.card
            border.color: Theme.cardBorder
        }
    }
}
