import QtQuick
import QtQuick.Templates as T
import ZEBStyle

T.Menu {
    id: control

    // Returns the enabled entry at this index; null for disabled entries and separators.
    function entryAt(index: int): MenuItem {
        const entry = itemAt(index) as MenuItem
        return entry?.enabled ? entry : null
    }

    // Moves to the next enabled entry in a direction. (The template stops at separators.)
    function step(direction: int) {
        let index = direction < 0 && currentIndex < 0 ? count : currentIndex
        do {
            index += direction
        } while (index >= 0 && index < count && !entryAt(index))
        if (entryAt(index))
            currentIndex = index
    }

    // Selects the entry under a moving mouse. A resting mouse selects nothing while the entries scroll.
    function pointAt(place: point) {
        const list = contentItem as ListView
        const index = list.indexAt(place.x, place.y + list.contentY)
        if (entryAt(index))
            currentIndex = index
    }

    // Triggers the enabled entry with this shortcut letter, if there is one.
    function choose(letter: string): bool {
        for (let index = 0; letter !== "" && index < count; ++index) {
            const entry = entryAt(index)
            if (!entry || Texts.letterOf(entry.text) !== letter.toLowerCase())
                continue
            dismiss()
            if (entry.action)
                entry.action.trigger()
            else
                entry.triggered()
            return true
        }
        return false
    }

    implicitWidth: Math.max(160, contentItem.childrenRect.width + leftPadding + rightPadding)
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    margins: 0
    padding: 4
    overlap: 1

    delegate: MenuItem {}

    contentItem: ListView {
        // The content height is not used: it is an estimate while entries are out of sight.
        implicitHeight: {
            let sum = 0
            for (let index = 0; index < control.count; ++index)
                sum += control.itemAt(index)?.height ?? 0
            return sum
        }
        model: control.contentModel
        // Scrollable if the menu is higher than the window.
        interactive: implicitHeight > height
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        currentIndex: control.currentIndex
        focus: true

        Keys.onDownPressed: control.step(1)
        Keys.onUpPressed: control.step(-1)
        Keys.onPressed: event => event.accepted = control.choose(event.text)

        implicitWidth: {
            let widest = 150
            for (let index = 0; index < control.count; ++index)
                widest = Math.max(widest, control.itemAt(index)?.implicitWidth ?? 0)
            return widest
        }

        T.ScrollBar.vertical: ScrollBar {}

        HoverHandler {
            property point place
            // The first position may be that of a resting mouse.
            property bool isKnown: false

            onHoveredChanged: isKnown = false
            onPointChanged: {
                if (isKnown && place !== point.scenePosition)
                    control.pointAt(point.position)
                place = point.scenePosition
                isKnown = true
            }
        }
    }

    background: Rectangle {
        implicitWidth: control.contentItem.implicitWidth + 8
        radius: Theme.radius
        color: Theme.card
        border.color: Theme.cardBorder
    }
}
