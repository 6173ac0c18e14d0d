import QtQuick
import QtQuick.Shapes
import ZEBMaker
import ZEBStyle

// The welcome picture. A click anywhere dismisses it, as do Space, Return and Escape.
FocusScope {
    id: splash

    signal dismissed

    focus: visible
    activeFocusOnTab: visible

    Accessible.role: Accessible.Button
    Accessible.name: Texts.localizedText("splash_dismiss")
    Accessible.onPressAction: splash.dismissed()

    Keys.onPressed: event => {
        event.accepted = true
        if ([Qt.Key_Space, Qt.Key_Return, Qt.Key_Enter, Qt.Key_Escape].includes(event.key))
            splash.dismissed()
    }

    Shape {
        anchors.fill: parent

        ShapePath {
            strokeWidth: -1
            startX: 0
            startY: 0
            fillGradient: LinearGradient {
                x1: 0
                y1: 0
                x2: splash.width
                y2: splash.height

                GradientStop {
                    position: 0
                    color: Qt.rgba(Theme.window.r, Theme.window.g, Theme.window.b, 0.94)
                }

                GradientStop {
                    position: 1
                    color: Qt.rgba(0, 0, 0, 0.9)
                }
            }

            PathLine {
                x: splash.width
                y: 0
            }

            PathLine {
                x: splash.width
                y: splash.height
            }

            PathLine {
                x: 0
                y: splash.height
            }
        }
    }

    AnimatedGIFView {
        id: animation

        anchors.centerIn: parent
        anchors.verticalCenterOffset: -(texts.height + 16) / 2
        width: 640 + 2 * shadowMargin
        height: 426 + 2 * shadowMargin
        resourceName: "QLANI"
        fileExtension: "GIF"
        Accessible.ignored: true
    }

    Column {
        id: texts

        anchors.horizontalCenter: parent.horizontalCenter
        anchors.top: animation.bottom
        anchors.topMargin: 16 - animation.shadowMargin
        spacing: 5

        OutlinedSplashText {
            anchors.horizontalCenter: parent.horizontalCenter
            text: Texts.localizedText("splash_title")
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: Texts.localizedText("splash_subtitle")
            font.pixelSize: Theme.calloutSize
            color: Qt.rgba(1, 1, 1, 0.86)
            style: Text.Raised
            styleColor: Qt.rgba(0, 0, 0, 0.75)
            Accessible.ignored: true
        }
    }

    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onClicked: splash.dismissed()
        onWheel: wheel => wheel.accepted = true
    }
}
