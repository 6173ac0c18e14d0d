pragma ComponentBehavior: Bound

import QtQuick

// A white title with a black outline made of eight shifted copies.
Item {
    id: title

    required property string text

    implicitWidth: front.implicitWidth
    implicitHeight: front.implicitHeight

    component Copy: Text {
        text: title.text
        textFormat: Text.PlainText
        font.pixelSize: 28
        font.weight: Font.Bold
        Accessible.ignored: true
    }

    Repeater {
        model: [[-1.4, 0], [1.4, 0], [0, -1.4], [0, 1.4], [-1, -1], [1, -1], [-1, 1], [1, 1]]

        Copy {
            required property var modelData

            x: modelData[0]
            y: modelData[1]
            color: "#000000"
        }
    }

    Copy {
        id: front

        color: "#ffffff"
    }
}
