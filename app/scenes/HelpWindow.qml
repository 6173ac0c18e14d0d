import QtQuick
import QtQuick.Controls
import ZEBMaker
import ZEBMakerScenes
import ZEBStyle

// The help page in its window.
ApplicationWindow {
    id: window

    required property Scenes scenes

    objectName: "zebmaker-help"
    title: Texts.localizedText("zebmaker_help_title")
    width: 780
    height: 720
    minimumWidth: 360
    minimumHeight: 300
    color: Theme.window

    onClosing: scenes.forget(window)

    ZEBMakerHelpView {
        anchors.fill: parent
    }

    WindowKeys {
        scenes: window.scenes
        onCloseRequested: window.close()
    }
}
