import QtQuick
import QtQuick.Controls

// A page that scrolls when it is higher than its place, or its place narrower than the least that it can do with. What
// the keyboard reaches comes into sight.
Flickable {
    id: page

    default property alias pageContent: holder.data
    property real leastWidth: 0
    readonly property Item focused: Window.activeFocusItem as Item

    // Brings an item of the page into sight, with a little room around it.
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
