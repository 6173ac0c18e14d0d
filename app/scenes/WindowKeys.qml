import QtQuick
import ZEBMakerScenes

// The keyboard shortcuts of every window without menus.
Item {
    id: keys

    required property Scenes scenes

    signal closeRequested

    Shortcut {
        sequences: ["Ctrl+W", "Escape"]
        onActivated: keys.closeRequested()
    }

    Shortcut {
        sequences: ["Ctrl+Q"]
        onActivated: keys.scenes.quit()
    }

    Shortcut {
        sequences: ["Ctrl+,"]
        onActivated: keys.scenes.showSettings()
    }

    Shortcut {
        sequences: ["Ctrl+?", "F1"]
        onActivated: keys.scenes.showHelp()
    }
}
