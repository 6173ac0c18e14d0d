import QtQuick
import QtQuick.Controls
import ZEBMaker
import ZEBStyle

// The text of the log. Scrolls along while its end is visible.
Flickable {
    id: view

    property alias text: lines.text
    property string name

    contentWidth: width
    contentHeight: log.height
    boundsBehavior: Flickable.StopAtBounds
    flickableDirection: Flickable.VerticalFlick
    clip: true

    ScrollBar.vertical: ScrollBar {}

    onContentHeightChanged: {
        if (log.wasAtEnd)
            contentY = Math.max(0, contentHeight - height)
    }
    onContentYChanged: log.wasAtEnd = contentY + height >= contentHeight - 4

    LogText {
        id: lines

        document: log.textDocument
        // A selection that reaches to the end must not grow.
        onAppended: length => {
            if (log.selectionStart < length && log.selectionEnd > length)
                log.select(log.selectionStart, length)
        }
        // Keep the visible lines in place.
        onShortened: height => view.contentY = Math.max(0, view.contentY - height)
    }

    TextEdit {
        id: log

        property bool wasAtEnd: true

        width: view.width - 12
        topPadding: 4
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.WrapAnywhere
        readOnly: true
        selectByMouse: true
        activeFocusOnTab: true
        font.family: Theme.monospaced
        font.pixelSize: Theme.captionSize
        color: Theme.text
        selectionColor: Theme.accent
        selectedTextColor: Theme.accentText

        Accessible.role: Accessible.EditableText
        Accessible.readOnly: true
        Accessible.multiLine: true
        Accessible.name: view.name

        EditMenu {}
    }

    FocusRing {
        shown: log.activeFocus
    }
}
