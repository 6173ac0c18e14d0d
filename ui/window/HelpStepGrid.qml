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
            implicitHeight: Math.max(132, column.implicitHeight + 28)
            radius: 8
            color: Theme.card
            border.color: Theme.cardBorder

            ColumnLayout {
                id: column

                x: 14
                y: 14
                width: parent.width - 28
                spacing: 8

                RowLayout {
                    spacing: 10

                    Rectangle {
                        Layout.alignment: Qt.AlignTop
                        implicitWidth: 28
                        implicitHeight: 28
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
                        Layout.fillWidth: true
                        Layout.minimumHeight: 28
                        verticalAlignment: Text.AlignVCenter
                        text: card.modelData[1]
                        font.weight: Font.DemiBold
                        font.pixelSize: Theme.bodySize + 1
                        wrapMode: Text.Wrap
                        Accessible.role: Accessible.Heading
                    }
                }

                Label {
                    Layout.fillWidth: true
                    text: card.modelData[2]
                    font.pixelSize: Theme.calloutSize
                    color: Theme.secondaryText
                    wrapMode: Text.Wrap
                    lineHeight: 1.15
                }
            }
        }
    }
}
