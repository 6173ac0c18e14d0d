pragma ComponentBehavior: Bound

import QtQml.Models
import QtQuick
import QtQuick.Controls
import ZEBMaker
import ZEBMakerScenes
import ZEBStyle

// The menus of the converter's window.
MenuBar {
    id: menus

    required property ContentViewModel content
    required property PresetMenuModel presetMenu
    required property Scenes scenes

    signal closeRequested

    Menu {
        title: Texts.localizedText("file_menu")

        Action {
            text: Texts.localizedText("choose_video")
            shortcut: "Ctrl+O"
            onTriggered: menus.content.vm.chooseInput()
        }

        Action {
            text: Texts.localizedText("save_zeb_as")
            shortcut: "Ctrl+S"
            enabled: menus.content.vm.inputPath !== ""
            onTriggered: menus.content.vm.chooseOutput()
        }

        Action {
            text: Texts.localizedText("play_zeb")
            shortcut: "Ctrl+P"
            onTriggered: menus.content.playMovie()
        }

        MenuSeparator {}

        Action {
            text: Texts.localizedText("close_window")
            shortcut: "Ctrl+W"
            onTriggered: menus.closeRequested()
        }

        Action {
            text: Texts.localizedText("quit_app")
            shortcut: "Ctrl+Q"
            onTriggered: menus.scenes.quit()
        }
    }

    Menu {
        id: presets

        title: Texts.localizedText("presets_menu")

        Instantiator {
            model: menus.presetMenu.builtInTitles

            MenuItem {
                required property string modelData
                required property int index

                text: modelData
                onTriggered: menus.presetMenu.applyBuiltIn(index)
            }

            onObjectAdded: (index, item) => presets.insertItem(index, item as Item)
            onObjectRemoved: (index, item) => presets.removeItem(item as Item)
        }

        MenuSeparator {
            visible: menus.presetMenu.userPresetNames.length > 0
            height: visible ? implicitHeight : 0
        }

        Instantiator {
            model: menus.presetMenu.userPresetNames

            MenuItem {
                required property string modelData
                required property int index

                text: modelData
                onTriggered: menus.presetMenu.applyUserPreset(index)
            }

            // After the built-in presets and the line.
            onObjectAdded: (index, item) => presets.insertItem(menus.presetMenu.builtInTitles.length + 1 + index, item as Item)
            onObjectRemoved: (index, item) => presets.removeItem(item as Item)
        }

        MenuSeparator {}

        Action {
            text: Texts.localizedText("preset_settings")
            shortcut: "Ctrl+,"
            onTriggered: menus.scenes.showSettings()
        }
    }

    Menu {
        title: Texts.localizedText("help_menu")

        Action {
            text: Texts.localizedText("zebmaker_help_menu")
            shortcut: "Ctrl+?"
            onTriggered: menus.scenes.showHelp()
        }
    }
}
