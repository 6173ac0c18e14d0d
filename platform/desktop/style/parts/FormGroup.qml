import QtQuick
import QtQuick.Layouts

// A group of form rows with a title beside them.
Rectangle {
    id: group

    default property alias rows: column.data
    property string title
    property alias rowSpacing: column.spacing
    readonly property int titleWidth: 106

    implicitWidth: column.implicitWidth + titleWidth + 24
    implicitHeight: column.implicitHeight + 14
    radius: 8
    color: Theme.group
    border.color: Theme.cardBorder

    Accessible.role: Accessible.Grouping
    Accessible.name: title

    Label {
        x: 12
        y: column.y
        width: group.titleWidth - 8
        height: Math.min(Theme.controlHeight, column.height)
        text: group.title
        font.pixelSize: Theme.calloutSize
        font.weight: Font.DemiBold
        color: Theme.secondaryText
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    ColumnLayout {
        id: column

        x: group.titleWidth + 12
        y: 7
        width: group.width - x - 12
        spacing: 10
    }
}
