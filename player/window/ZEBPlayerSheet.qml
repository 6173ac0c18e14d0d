pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtQuick.Shapes
import ZEBPlayer
import ZEBStyle

// The content of a player window: status, picture, slider and controls of one movie.
FocusScope {
    id: sheet

    required property PlayerSheetModel sheetModel
    required property bool isFullScreen
    readonly property bool listIsOpen: colours.popup.visible

    signal fullScreenToggled

    implicitWidth: 920
    implicitHeight: 620

    component ControlButton: ToolButton {
        focusPolicy: Qt.TabFocus
        ToolTip.text: text
        ToolTip.visible: hovered && text !== ""
        ToolTip.delay: 600
    }

    // Paints the corners of the picture's area in the colour around it.
    component Corner: Shape {
        id: corner

        property int turn

        width: 10
        height: 10
        rotation: turn * 90
        visible: !sheet.isFullScreen

        ShapePath {
            strokeWidth: -1
            fillColor: Theme.window
            startX: 0
            startY: 0

            PathLine {
                x: 10
                y: 0
            }

            PathArc {
                x: 0
                y: 10
                radiusX: 10
                radiusY: 10
                direction: PathArc.Counterclockwise
            }

            PathLine {
                x: 0
                y: 0
            }
        }
    }

    onIsFullScreenChanged: colours.popup.close()

    Component.onCompleted: sheetModel.appear()
    Component.onDestruction: sheetModel.disappear()

    Keys.onPressed: event => {
        if (event.key === Qt.Key_Tab)
            attention.restart()
        event.accepted = sheetModel.handleKey(event.key, event.modifiers)
    }

    // In full screen only the picture is visible. Mouse movement or Tab shows the controls for a while.
    Timer {
        id: attention

        interval: 2500
    }

    HoverHandler {
        property point place

        cursorShape: controls.isShown ? Qt.ArrowCursor : Qt.BlankCursor
        // The signal is also sent while the mouse rests.
        onPointChanged: {
            if (point.position === place)
                return
            place = point.position
            attention.restart()
        }
    }

    Label {
        id: status

        x: 14
        y: 14
        width: parent.width - 28
        visible: !sheet.isFullScreen
        text: sheet.sheetModel.statusLine
        font.weight: Font.DemiBold
        elide: Text.ElideRight
        textFormat: Text.PlainText
    }

    Rectangle {
        x: sheet.isFullScreen ? 0 : 14
        y: sheet.isFullScreen ? 0 : status.y + status.height + 12
        width: parent.width - 2 * x
        height: (sheet.isFullScreen ? parent.height : controls.y - 12) - y
        color: sheet.isFullScreen ? "black" : Theme.screen

        FrameItem {
            id: frame

            objectName: "frame"
            anchors.fill: parent
            player: sheet.sheetModel.model
            Accessible.role: Accessible.Graphic
            Accessible.name: sheet.sheetModel.statusLine
        }

        Label {
            anchors.centerIn: parent
            visible: !sheet.sheetModel.hasImage
            text: Texts.localizedText("no_image")
            color: "#9aa1ad"
        }

        Corner {}

        Corner {
            anchors.right: parent.right
            turn: 1
        }

        Corner {
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            turn: 2
        }

        Corner {
            anchors.bottom: parent.bottom
            turn: 3
        }

        TapHandler {
            onDoubleTapped: sheet.fullScreenToggled()
        }
    }

    DropArea {
        anchors.fill: parent
        keys: ["text/uri-list"]
        onEntered: drag => drag.accepted = sheet.sheetModel.takesURLs(drag.urls)
        onDropped: drop => {
            drop.accept(Qt.CopyAction)
            sheet.sheetModel.takeDroppedURLs(drop.urls)
        }
    }

    Rectangle {
        anchors.fill: controls
        visible: sheet.isFullScreen && controls.isShown
        color: Theme.window
        opacity: 0.92
    }

    ColumnLayout {
        id: controls

        readonly property bool isShown: !sheet.isFullScreen || attention.running || mouseOnControls.hovered
                                        || slider.pressed || sheet.Window.activeFocusItem !== sheet

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        visible: isShown
        spacing: 12

        HoverHandler {
            id: mouseOnControls
        }

        RowLayout {
            Layout.margins: 14
            Layout.topMargin: sheet.isFullScreen ? 14 : 0
            Layout.bottomMargin: 0
            spacing: 8

            Label {
                Layout.preferredWidth: 110
                text: sheet.sheetModel.timeText
                font.pixelSize: Theme.captionSize
                font.family: Theme.monospaced
                color: Theme.secondaryText
            }

            Slider {
                id: slider

                objectName: "slider"
                Layout.fillWidth: true
                from: 0
                to: sheet.sheetModel.sliderMaximum
                stepSize: 1
                enabled: sheet.sheetModel.sliderEnabled
                focusPolicy: Qt.TabFocus
                Accessible.name: Texts.localizedText("player_position")

                onPressedChanged: sheet.sheetModel.setScrubbing(pressed)
                onMoved: sheet.sheetModel.scrubTo(value)

                Binding on value {
                    value: sheet.sheetModel.sliderValue
                }
            }

            Label {
                Layout.preferredWidth: 88
                text: sheet.sheetModel.counterText
                font.pixelSize: Theme.captionSize
                font.family: Theme.monospaced
                color: Theme.secondaryText
                horizontalAlignment: Text.AlignRight
            }
        }

        RowLayout {
            Layout.margins: 14
            Layout.topMargin: 0
            spacing: 10

            Button {
                objectName: "openMaker"
                focusPolicy: Qt.TabFocus
                text: Texts.localizedText("app_title")
                icon.source: "qrc:/icons/ZEBDocumentIcon.svg"
                icon.width: 18
                icon.height: 18
                icon.color: "transparent"
                spacing: 5
                ToolTip.text: Texts.localizedText("open_maker")
                ToolTip.visible: hovered
                ToolTip.delay: 600
                onClicked: sheet.sheetModel.openMaker()
            }

            RowLayout {
                spacing: 2

                ControlButton {
                    objectName: "beginning"
                    text: Texts.localizedText("Anfang")
                    icon.source: "qrc:/icons/beginning.svg"
                    enabled: sheet.sheetModel.canStepBack
                    onClicked: sheet.sheetModel.toBeginning()
                }

                ControlButton {
                    objectName: "stepBack"
                    text: Texts.localizedText("Ein Frame zurück")
                    icon.source: "qrc:/icons/frame-back.svg"
                    enabled: sheet.sheetModel.canStepBack
                    onClicked: sheet.sheetModel.stepBack()
                }

                ControlButton {
                    objectName: "play"
                    text: sheet.sheetModel.model.isPlaying ? Texts.localizedText("Pause") : Texts.localizedText("Play")
                    icon.source: sheet.sheetModel.model.isPlaying ? "qrc:/icons/pause.svg" : "qrc:/icons/play.svg"
                    icon.width: 24
                    icon.height: 24
                    onClicked: sheet.sheetModel.playOrPause()
                }

                ControlButton {
                    objectName: "stop"
                    text: Texts.localizedText("Stop")
                    icon.source: "qrc:/icons/stop.svg"
                    onClicked: sheet.sheetModel.stop()
                }

                ControlButton {
                    objectName: "stepForward"
                    text: Texts.localizedText("Ein Frame vor")
                    icon.source: "qrc:/icons/frame-forward.svg"
                    enabled: sheet.sheetModel.canStepForward
                    onClicked: sheet.sheetModel.stepForward()
                }

                ControlButton {
                    objectName: "end"
                    text: Texts.localizedText("Ende")
                    icon.source: "qrc:/icons/end.svg"
                    enabled: sheet.sheetModel.canStepForward
                    onClicked: sheet.sheetModel.toEnd()
                }
            }

            RowLayout {
                spacing: 2

                ControlButton {
                    objectName: "reload"
                    text: Texts.localizedText("reload")
                    icon.source: "qrc:/icons/reload.svg"
                    onClicked: sheet.sheetModel.appear()
                }

                ControlButton {
                    objectName: "loop"
                    text: Texts.localizedText("loop")
                    icon.source: "qrc:/icons/loop.svg"
                    checkable: true
                    checked: sheet.sheetModel.storedLoop
                    onToggled: sheet.sheetModel.storedLoop = checked
                }
            }

            ComboBox {
                id: colours

                property bool keepsKeys

                objectName: "mode32"
                // Narrower in a narrow window, to leave room for the other controls.
                Layout.fillWidth: true
                Layout.minimumWidth: 80
                Layout.maximumWidth: 160
                rightPadding: 22
                visible: sheet.sheetModel.isMode32
                model: sheet.sheetModel.mode32Labels
                currentIndex: sheet.sheetModel.storedMode32
                focusPolicy: Qt.TabFocus
                Accessible.name: Texts.localizedText("mode32_label")
                ToolTip.text: Texts.localizedText("mode32_label")
                ToolTip.visible: hovered && !down
                ToolTip.delay: 600
                onActivated: index => sheet.sheetModel.storedMode32 = index

                // The open list takes the keyboard focus, however it was opened, and returns it when closed.
                // The shortcuts of the window keep working, because the list does not handle Escape itself.
                popup.width: Math.max(width, 160)
                popup.closePolicy: Popup.CloseOnPressOutsideParent
                popup.onAboutToShow: {
                    keepsKeys = activeFocus
                    forceActiveFocus(Qt.PopupFocusReason)
                }
                popup.onClosed: {
                    if (!keepsKeys)
                        focus = false
                }
            }

            Label {
                Layout.preferredWidth: 90
                visible: !sheet.sheetModel.isMode32
                text: sheet.sheetModel.modeText
                color: Theme.secondaryText
            }

            Item {
                Layout.fillWidth: true
                Layout.minimumWidth: close.implicitWidth
                implicitHeight: close.implicitHeight

                Button {
                    id: close

                    objectName: "close"
                    anchors.right: parent.right
                    focusPolicy: Qt.TabFocus
                    text: Texts.localizedText("close")
                    onClicked: sheet.sheetModel.close()
                }
            }
        }
    }
}
