import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T

// A question with two answers in the middle of the window, shown while `question` is not empty. The second answer is
// the safe one: it has the keyboard focus, and Escape selects it.
T.Popup {
    id: alert

    property string title
    property string question
    property string acceptText
    property string rejectText
    property bool destructive

    signal accepted
    signal rejected

    parent: T.Overlay.overlay
    anchors.centerIn: T.Overlay.overlay
    width: Math.min(420, (parent?.width ?? 460) - 40)
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: 20
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape

    onQuestionChanged: question !== "" ? open() : close()
    // Closed without an answer.
    onClosed: {
        if (question !== "")
            rejected()
    }

    T.Overlay.modal: Rectangle {
        color: "#80000000"
    }

    background: Rectangle {
        radius: 10
        color: Theme.card
        border.color: Theme.cardBorder
    }

    contentItem: ColumnLayout {
        spacing: 8

        Accessible.role: Accessible.AlertMessage
        Accessible.name: alert.title
        Accessible.description: alert.question

        Label {
            Layout.fillWidth: true
            text: alert.title
            font.pixelSize: Theme.bodySize + 2
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
        }

        Label {
            Layout.fillWidth: true
            text: alert.question
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            color: Theme.secondaryText
        }

        RowLayout {
            Layout.topMargin: 10
            Layout.alignment: Qt.AlignRight
            spacing: 8

            Button {
                objectName: "accept"
                text: alert.acceptText
                destructive: alert.destructive
                onClicked: alert.accepted()
                Keys.onReturnPressed: clicked()
                Keys.onEnterPressed: clicked()
            }

            Button {
                objectName: "reject"
                text: alert.rejectText
                highlighted: true
                focus: true
                onClicked: alert.rejected()
                Keys.onReturnPressed: clicked()
                Keys.onEnterPressed: clicked()
            }
        }
    }
}
