import QtQuick
import QtQuick.Controls

// A page that scrolls up and down when it is higher than its place. What the keyboard reaches comes into sight.
Flickable {
    id: page

    default property alias pageContent: holder.data
    readonly property Item focused: Window.activeFocusItem as Item

    // Brings an item of the page into sight, with a little room around it.
    function reveal(item: Item) {
        const top = item.mapToItem(holder, 0, 0).y - 8
        const bottom = top + item.height + 16
        if (top < contentY)
            contentY = Math.max(0, top)
        else if (bottom > contentY + height)
            contentY = Math.min(contentHeight - height, bottom - height)
    }

    contentWidth: width
    contentHeight: holder.height
    boundsBehavior: Flickable.StopAtBounds
    flickableDirection: Flickable.VerticalFlick
    clip: true

    onFocusedChanged: {
        for (let item = focused; item; item = item.parent) {
            if (item === holder)
                return reveal(focused)
        }
    }

    ScrollBar.vertical: ScrollBar {}

    Item {
        id: holder

        width: page.width
        height: childrenRect.height
    }
}
