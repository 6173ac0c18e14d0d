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

    // A question is open and must be answered first.
    required property bool isAsking

    signal closeRequested

    // Alt is pressed, and no other key has been pressed since.
    property bool altIsAlone: false

    // Opens the first menu: for F10, and for Alt pressed alone. Must be called with the keys not handled by
    // the window's content.
    function openFirst() {
        (itemAt(0) as MenuBarItem).triggered()
    }

    function keyPressed(event: KeyEvent) {
        altIsAlone = event.key === Qt.Key_Alt && (event.modifiers & ~Qt.AltModifier) === 0
    }

    function keyReleased(event: KeyEvent) {
        if (altIsAlone && event.key === Qt.Key_Alt)
            openFirst()
        altIsAlone = false
    }

    enabled: !isAsking

    component Command: Action {
        enabled: !menus.isAsking
    }

    Menu {
        objectName: "fileMenu"
        title: Texts.localizedText("file_menu")

        Command {
            text: Texts.localizedText("choose_video_menu")
            shortcut: "Ctrl+O"
            onTriggered: menus.content.vm.chooseInput()
        }

        Command {
            text: Texts.localizedText("save_zeb_as_menu")
            shortcut: "Ctrl+S"
            enabled: !menus.isAsking && menus.content.vm.inputPath !== ""
            onTriggered: menus.content.vm.chooseOutput()
        }

        Command {
            text: Texts.localizedText("play_zeb_menu")
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

        // The built-in presets may be added after the others.
        function placeAfterLine(): int {
            let place = 0
            while (itemAt(place) !== line)
                ++place
            return place + 1
        }

        objectName: "presetsMenu"
        title: Texts.localizedText("presets_menu")

        Instantiator {
            model: menus.presetMenu.builtInTitles

            MenuItem {
                required property string modelData
                required property int index

                text: Texts.labelOf(modelData)
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

                text: Texts.labelOf(modelData)
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
