import QtQuick
import QtQuick.Templates as T
import ZEBStyle

T.Menu {
    id: control

    // The entry at this place, if it can be chosen; null for lines, too.
    function entryAt(index: int): MenuItem {
        const entry = itemAt(index) as MenuItem
        return entry?.enabled ? entry : null
    }

    // Goes to the next entry in a direction. (The template stops at lines, where nothing can be seen of it.)
    function step(direction: int) {
        let index = direction < 0 && currentIndex < 0 ? count : currentIndex
        do {
            index += direction
        } while (index >= 0 && index < count && !entryAt(index))
        if (entryAt(index))
            currentIndex = index
    }

    // The entry under a mouse that has moved. One that rests there while the entries scroll below it changes nothing.
    function pointAt(place: point) {
        const list = contentItem as ListView
        const index = list.indexAt(place.x, place.y + list.contentY)
        if (entryAt(index))
            currentIndex = index
    }

    // Does what the entry with this letter does, if there is one that can be chosen.
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
        // Not the height of the content, which is an estimate while entries are out of sight.
        implicitHeight: {
            let sum = 0
            for (let index = 0; index < control.count; ++index)
                sum += control.itemAt(index)?.height ?? 0
            return sum
        }
        model: control.contentModel
        // Longer than the window is high.
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
            // Where it is first seen it may be at rest.
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
