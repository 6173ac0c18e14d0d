import QtQuick
import QtQuick.Controls

// A page that scrolls vertically if it is higher than its viewport, and horizontally if its minimum width is larger.
// Scrolls to the item with the keyboard focus.
Flickable {
    id: page

    default property alias pageContent: holder.data
    property real leastWidth: 0
    readonly property Item focused: Window.activeFocusItem as Item

    // Scrolls an item of the page into view, with a small margin.
    function reveal(item: Item) {
        const top = item.mapToItem(holder, 0, 0).y - 8
        const bottom = top + item.height + 16
        if (top < contentY)
            contentY = Math.max(0, top)
        else if (bottom > contentY + height)
            contentY = Math.min(contentHeight - height, bottom - height)
        const left = item.mapToItem(holder, 0, 0).x - 8
        const right = left + item.width + 16
        if (left < contentX)
            contentX = Math.max(0, left)
        else if (right > contentX + width)
            contentX = Math.min(contentWidth - width, right - width)
    }

    contentWidth: holder.width
    contentHeight: holder.height
    boundsBehavior: Flickable.StopAtBounds
    flickableDirection: Flickable.AutoFlickIfNeeded
    clip: true

    onFocusedChanged: {
        for (let item = focused; item; item = item.parent) {
            if (item === holder)
                return reveal(focused)
        }
    }

    ScrollBar.vertical: ScrollBar {}
    ScrollBar.horizontal: ScrollBar {}

    Item {
        id: holder

        width: Math.max(page.width, page.leastWidth)
        height: childrenRect.height
    }
}
