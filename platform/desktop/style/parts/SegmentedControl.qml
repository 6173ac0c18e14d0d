pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts

// A choice between a few options, side by side. `choices` are objects with "text" and "value".
FocusScope {
    id: control

    property var choices: []
    property var value
    property string name

    signal chosen(value: var)

    implicitWidth: row.implicitWidth + 4
    implicitHeight: Theme.controlHeight

    Accessible.role: Accessible.Grouping
    Accessible.name: name

    Rectangle {
        anchors.fill: parent
        radius: Theme.radius
        color: Theme.track
        opacity: control.enabled ? 1 : 0.5
    }

    RowLayout {
        id: row

        anchors.fill: parent
        anchors.margins: 2
        spacing: 2

        Repeater {
            model: control.choices

            Rectangle {
                id: segment

                required property var modelData
                required property int index
                readonly property bool isChosen: modelData.value === control.value

                function choose() {
                    forceActiveFocus(Qt.TabFocusReason)
                    control.chosen(modelData.value)
                }

                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                Layout.minimumWidth: label.implicitWidth + 20
                radius: Theme.radius - 1
                color: isChosen ? Theme.chosen : area.containsMouse ? Theme.buttonHovered : "transparent"
                opacity: control.enabled ? 1 : 0.6
                activeFocusOnTab: isChosen
                focus: isChosen

                Accessible.role: Accessible.RadioButton
                Accessible.name: modelData.text
                Accessible.checkable: true
                Accessible.checked: isChosen
                Accessible.onPressAction: choose()
                Accessible.onToggleAction: choose()

                Keys.onLeftPressed: control.step(-1)
                Keys.onRightPressed: control.step(1)
                Keys.onSpacePressed: choose()

                Text {
                    id: label

                    anchors.centerIn: parent
                    text: segment.modelData.text
                    font.pixelSize: Theme.bodySize
                    font.weight: segment.isChosen ? Font.DemiBold : Font.Normal
                    color: control.enabled ? Theme.text : Theme.disabledText
                }

                MouseArea {
                    id: area

                    anchors.fill: parent
                    hoverEnabled: true
                    onClicked: segment.choose()
                }

                FocusRing {
                    shown: segment.activeFocus
                    anchors.margins: -2
                    radius: Theme.radius + 1
                }
            }
        }
    }

    function step(distance: int) {
        for (let index = 0; index < choices.length; ++index) {
            if (choices[index].value !== value)
                continue
            const next = row.children[Math.max(0, Math.min(index + distance, choices.length - 1))]
            next.choose()
            return
        }
    }
}
