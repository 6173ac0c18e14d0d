import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZEBStyle

// A button that chooses a file, and the path of the chosen file.
RowLayout {
    id: row

    property alias text: button.text
    property alias buttonEnabled: button.enabled
    property int buttonWidth
    property string path

    signal chosen

    Layout.fillWidth: true
    spacing: 10

    Button {
        id: button

        Layout.preferredWidth: Math.max(row.buttonWidth, implicitWidth)
        onClicked: row.chosen()
    }

    Label {
        Layout.fillWidth: true
        text: row.path === "" ? "—" : row.path
        textFormat: Text.PlainText
        color: Theme.secondaryText
        elide: Text.ElideMiddle
        Accessible.description: button.text
    }
}
