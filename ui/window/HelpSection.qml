import QtQuick
import QtQuick.Controls
import QtQuick.Controls.impl
import QtQuick.Layouts
import ZEBStyle

// A section of the help page, with its icon.
RowLayout {
    id: section

    property string icon
    property string title
    property string text

    Layout.fillWidth: true
    spacing: 14

    Rectangle {
        Layout.alignment: Qt.AlignTop
        implicitWidth: 34
        implicitHeight: 34
        radius: 8
        color: Theme.accent

        IconImage {
            anchors.centerIn: parent
            source: "qrc:/icons/" + section.icon + ".svg"
            sourceSize.width: 21
            sourceSize.height: 21
            color: Theme.accentText
        }
    }

    ColumnLayout {
        Layout.alignment: Qt.AlignTop
        spacing: 7

        Label {
            Layout.fillWidth: true
            text: section.title
            font.weight: Font.DemiBold
            font.pixelSize: Theme.bodySize + 1
            wrapMode: Text.Wrap
            Accessible.role: Accessible.Heading
        }

        Label {
            Layout.fillWidth: true
            text: section.text
            color: Theme.secondaryText
            wrapMode: Text.Wrap
            lineHeight: 1.15
        }
    }
}
