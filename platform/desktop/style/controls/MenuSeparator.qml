import QtQuick
import QtQuick.Templates as T

T.MenuSeparator {
    implicitWidth: 40
    implicitHeight: 9
    padding: 4

    contentItem: Rectangle {
        implicitHeight: 1
        color: Theme.cardBorder
    }
}
