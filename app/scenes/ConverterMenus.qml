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

    // A question is open: it comes first.
    required property bool isAsking

    signal closeRequested

    component Command: Action {
        enabled: !menus.isAsking
    }

    Menu {
        title: Texts.localizedText("file_menu")

        Command {
            text: Texts.localizedText("choose_video")
            shortcut: "Ctrl+O"
            onTriggered: menus.content.vm.chooseInput()
        }

        Command {
            text: Texts.localizedText("save_zeb_as")
            shortcut: "Ctrl+S"
            enabled: !menus.isAsking && menus.content.vm.inputPath !== ""
            onTriggered: menus.content.vm.chooseOutput()
        }

        Command {
            text: Texts.localizedText("play_zeb")
            shortcut: "Ctrl+P"
            onTriggered: menus.content.playMovie()
        }

        MenuSeparator {}

        Command {
            text: Texts.localizedText("close_window")
            shortcut: "Ctrl+W"
            onTriggered: menus.closeRequested()
        }

        Command {
            text: Texts.localizedText("quit_app")
            shortcut: "Ctrl+Q"
            onTriggered: menus.scenes.quit()
        }
    }

    Menu {
        id: presets

        // The built-in presets may come later than the others.
        function placeAfterLine(): int {
            let place = 0
            while (itemAt(place) !== line)
                ++place
            return place + 1
        }

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
            id: line

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

            onObjectAdded: (index, item) => presets.insertItem(presets.placeAfterLine() + index, item as Item)
            onObjectRemoved: (index, item) => presets.removeItem(item as Item)
        }

        MenuSeparator {}

        Command {
            text: Texts.localizedText("preset_settings")
            shortcut: "Ctrl+,"
            onTriggered: menus.scenes.showSettings()
        }
    }

    Menu {
        title: Texts.localizedText("help_menu")

        Command {
            text: Texts.localizedText("zebmaker_help_menu")
            shortcut: "Ctrl+?"
            onTriggered: menus.scenes.showHelp()
        }
    }
}
