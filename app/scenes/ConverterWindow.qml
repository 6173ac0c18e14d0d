import QtQuick
import QtQuick.Controls
import ZEBMaker
import ZEBMakerScenes
import ZEBStyle

// The converter's window: menus, the converter, and at the start the splash over it.
ApplicationWindow {
    id: window

    required property ContentViewModel content
    required property PresetMenuModel presetMenu
    required property Scenes scenes
    required property url backgroundPicture
    property bool showStartupSplash

    objectName: "converter"
    title: Texts.localizedText("app_title")
    width: view.windowWidth
    height: view.windowHeight + menus.height
    minimumWidth: 560
    minimumHeight: 360
    maximumWidth: view.windowWidth
    maximumHeight: view.windowHeight + menus.height
    color: Theme.window

    // Ask before closing: an accidental click must not cancel a running conversion.
    onClosing: close => {
        close.accepted = scenes.mayCloseConverter()
        if (!close.accepted)
            return
        content.dismissCancelledOutputQuestion()
        scenes.forget(window)
    }

    Shortcut {
        sequences: ["F1"]
        onActivated: window.scenes.showHelp()
    }

    Shortcut {
        sequences: ["F10"]
        enabled: menus.enabled
        onActivated: menus.openFirst()
    }

    menuBar: ConverterMenus {
        id: menus

        content: window.content
        presetMenu: window.presetMenu
        scenes: window.scenes
        isAsking: unfinishedQuestion.visible || replaceQuestion.visible || misfitQuestion.visible || quitQuestion.visible
        onCloseRequested: window.close()
    }

    ContentView {
        id: view

        anchors.fill: parent
        focus: true
        content: window.content
        backgroundPicture: window.backgroundPicture
        enabled: !splash.visible
        Keys.onPressed: event => menus.keyPressed(event)
        Keys.onReleased: event => menus.keyReleased(event)
    }

    Alert {
        id: unfinishedQuestion

        title: Texts.localizedText("cancelled_output_alert_title")
        question: window.content.cancelledOutputQuestion
        acceptText: Texts.localizedText("delete")
        rejectText: Texts.localizedText("keep")
        destructive: true
        onAccepted: window.content.vm.deleteCancelledOutput()
        onRejected: window.content.dismissCancelledOutputQuestion()
    }

    Alert {
        id: replaceQuestion

        title: Texts.localizedText("replace_alert_title")
        question: window.content.replaceQuestion
        acceptText: Texts.localizedText("replace")
        rejectText: Texts.localizedText("cancel")
        destructive: true
        onAccepted: window.content.replaceAndStart()
        onRejected: window.content.dismissReplaceQuestion()
    }

    Alert {
        id: misfitQuestion

        title: Texts.localizedText("misfit_alert_title")
        question: window.content.misfitQuestion
        acceptText: Texts.localizedText("start_anyway")
        rejectText: Texts.localizedText("cancel")
        onAccepted: window.content.startAnyway()
        onRejected: window.content.dismissMisfitQuestion()
    }

    Alert {
        id: quitQuestion

        title: Texts.localizedText("quit_alert_title")
        question: window.scenes.isAskingToQuit ? Texts.localizedText("quit_alert_message") : ""
        acceptText: Texts.localizedText("quit_anyway")
        rejectText: Texts.localizedText("continue_running")
        destructive: true
        onAccepted: window.scenes.quitAnyway()
        onRejected: window.scenes.goOn()
    }

    StartupSplashView {
        id: splash

        anchors.fill: parent
        opacity: window.showStartupSplash ? 1 : 0
        visible: opacity > 0
        onVisibleChanged: {
            if (!visible)
                view.forceActiveFocus()
        }
        onDismissed: {
            fade.duration = 180
            window.showStartupSplash = false
        }

        Behavior on opacity {
            NumberAnimation {
                id: fade

                duration: 250
                easing.type: Easing.OutQuad
            }
        }
    }

    // Also covers the splash, which is dismissed when files are dropped.
    DropArea {
        anchors.fill: parent
        keys: ["text/uri-list"]
        onDropped: drop => {
            drop.accept(Qt.CopyAction)
            window.content.takeDroppedURLs(drop.urls)
            splash.dismissed()
        }

        Rectangle {
            anchors.fill: parent
            anchors.margins: 4
            visible: parent.containsDrag
            color: "transparent"
            radius: 12
            border.color: Theme.accent
            border.width: 3
        }
    }

    Timer {
        interval: 2800
        running: window.visible && window.showStartupSplash
        onTriggered: window.showStartupSplash = false
    }
}
