import QtQuick
import QtQuick.Templates as T

T.MenuBar {
    id: control

    implicitWidth: contentItem.implicitWidth
    implicitHeight: 30
    leftPadding: 6

    delegate: MenuBarItem {}

    contentItem: Row {
        spacing: 2

        Repeater {
            model: control.contentModel
        }
    }

    background: Rectangle {
        color: Theme.window

        Rectangle {
            width: parent.width
            height: 1
            anchors.bottom: parent.bottom
            color: Theme.cardBorder
        }
    }
}
