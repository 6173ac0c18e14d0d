import QtQuick
import QtQuick.Templates as T

T.GroupBox {
    id: control

    implicitWidth: Math.max(implicitContentWidth + leftPadding + rightPadding,
                            implicitLabelWidth + leftPadding + rightPadding)
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: 10
    spacing: 4
    topPadding: padding + (title !== "" ? implicitLabelHeight + spacing : 0)
    font.pixelSize: Theme.bodySize

    label: Text {
        x: 2
        width: control.width - 4
        text: control.title
        font.pixelSize: Theme.calloutSize
        font.weight: Font.DemiBold
        color: Theme.secondaryText
        elide: Text.ElideRight
    }

    background: Rectangle {
        y: control.title !== "" ? control.implicitLabelHeight + control.spacing : 0
        width: control.width
        height: control.height - y
        radius: 8
        color: Theme.card
        border.color: Theme.cardBorder
    }
}
