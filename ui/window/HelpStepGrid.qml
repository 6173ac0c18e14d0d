pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZEBStyle

// The numbered steps of the help page, in as many columns as fit. `steps` are lists of number, title and text.
GridLayout {
    id: grid

    property var steps: []
    readonly property int leastColumnWidth: 280

    columns: width >= 2 * leastColumnWidth + columnSpacing ? 2 : 1
    columnSpacing: 12
    rowSpacing: 12

    Repeater {
        model: grid.steps

        Rectangle {
            id: card

            required property var modelData

            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: grid.leastColumnWidth
            implicitHeight: Math.max(132, body.y + body.implicitHeight + 14)
            radius: 8
            color: Theme.card
            border.color: Theme.cardBorder

            Rectangle {
                id: badge

                x: 14
                y: 14
                width: 28
                height: 28
                radius: 8
                color: Theme.accent

                Label {
                    anchors.centerIn: parent
                    text: card.modelData[0]
                    font.pixelSize: 15
                    font.weight: Font.Bold
                    color: Theme.accentText
                }
            }

            Label {
                anchors.left: badge.right
                anchors.right: parent.right
                anchors.verticalCenter: badge.verticalCenter
                anchors.leftMargin: 10
                anchors.rightMargin: 14
                text: card.modelData[1]
                font.weight: Font.DemiBold
                font.pixelSize: Theme.bodySize + 1
                elide: Text.ElideRight
                Accessible.role: Accessible.Heading
            }

            Label {
                id: body

                anchors.left: badge.left
                anchors.right: parent.right
                anchors.rightMargin: 14
                y: badge.y + badge.height + 8
                text: card.modelData[2]
                font.pixelSize: Theme.calloutSize
                color: Theme.secondaryText
                wrapMode: Text.Wrap
                lineHeight: 1.15
            }
        }
    }
}
