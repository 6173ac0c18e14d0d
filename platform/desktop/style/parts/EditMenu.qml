pragma ComponentBehavior: Bound

import QtQuick
import ZEBStyle

// The context menu of its parent, which is a TextInput, a TextEdit or a TextField. The right mouse button, the menu
// key and Shift+F10 open the menu.
Item {
    id: place

    readonly property var editor: parent

    function show(x: real, y: real) {
        (maker.createObject(place) as Menu).popup(place, x, y)
    }

    function showAtCursor() {
        const cursor = editor.cursorRectangle
        show(cursor.x, cursor.y + cursor.height)
    }

    anchors.fill: parent

    Component.onCompleted: parent.Keys.forwardTo = [place] // qmllint disable
    Keys.onMenuPressed: showAtCursor()
    Keys.onPressed: event => {
        event.accepted = event.key === Qt.Key_F10 && event.modifiers === Qt.ShiftModifier
        if (event.accepted)
            showAtCursor()
    }

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.RightButton
        onPressed: mouse => {
            place.editor.forceActiveFocus(Qt.MouseFocusReason)
            place.show(mouse.x, mouse.y)
        }
    }

    Component {
        id: maker

        Menu {
            onClosed: destroy()

            MenuItem {
                text: Texts.localizedText("edit_cut")
                enabled: !place.editor.readOnly && place.editor.selectedText !== ""
                onTriggered: place.editor.cut()
            }

            MenuItem {
                text: Texts.localizedText("edit_copy")
                enabled: place.editor.selectedText !== ""
                onTriggered: place.editor.copy()
            }

            MenuItem {
                text: Texts.localizedText("edit_paste")
                enabled: place.editor.canPaste
                onTriggered: place.editor.paste()
            }

            MenuSeparator {}

            MenuItem {
                text: Texts.localizedText("edit_select_all")
                enabled: place.editor.length > 0
                onTriggered: place.editor.selectAll()
            }
        }
    }
}
