import QtQuick
import QtQuick.Templates as T

T.Menu {
    id: control

    implicitWidth: Math.max(160, contentItem.childrenRect.width + leftPadding + rightPadding)
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    margins: 0
    padding: 4
    overlap: 1

    delegate: MenuItem {}

    contentItem: ListView {
        implicitHeight: contentHeight
        model: control.contentModel
        interactive: false
        clip: true
        currentIndex: control.currentIndex
        implicitWidth: {
            let widest = 150
            for (let index = 0; index < control.count; ++index)
                widest = Math.max(widest, control.itemAt(index)?.implicitWidth ?? 0)
            return widest
        }
    }

    background: Rectangle {
        implicitWidth: control.contentItem.implicitWidth + 8
        radius: Theme.radius
        color: Theme.card
        border.color: Theme.cardBorder
    }
}
