import QtQuick
import QtQuick.Controls
import ZEBMaker
import ZEBMakerScenes
import ZEBStyle

// The settings in their window.
ApplicationWindow {
    id: window

    required property PresetSettingsModel settings
    required property Scenes scenes

    objectName: "settings"
    title: Texts.localizedText("settings_title")
    width: view.implicitWidth
    height: view.implicitHeight
    minimumWidth: view.implicitWidth
    maximumWidth: view.implicitWidth
    minimumHeight: 300
    maximumHeight: view.implicitHeight
    color: Theme.window

    Component.onCompleted: settings.appear()
    onClosing: scenes.forget(window)

    PresetSettingsView {
        id: view

        anchors.fill: parent
        settings: window.settings
    }

    WindowKeys {
        scenes: window.scenes
        onCloseRequested: window.close()
    }
}
