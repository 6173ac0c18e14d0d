import QtQuick
import QtQuick.Controls
import ZEBPlayer
import ZEBStyle

// A window for one movie.
ApplicationWindow {
    id: window

    required property PlayerSheetModel sheetModel

    function toggleFullScreen() {
        visibility = visibility === Window.FullScreen ? Window.Windowed : Window.FullScreen
    }

    // Leaves full screen first, then closes.
    function leave() {
        if (visibility === Window.FullScreen)
            visibility = Window.Windowed
        else
            sheetModel.close()
    }

    objectName: "ZEBPlayerWindow"
    width: 920
    height: 620
    minimumWidth: 700
    minimumHeight: 500
    color: Theme.window

    onClosing: sheetModel.close()

    Shortcut {
        sequences: ["Escape"]
        onActivated: window.leave()
    }

    Shortcut {
        sequences: ["F", "F11"]
        onActivated: window.toggleFullScreen()
    }

    Shortcut {
        sequences: ["Ctrl+W"]
        onActivated: window.sheetModel.close()
    }

    Shortcut {
        sequences: ["Ctrl+Q"]
        onActivated: Qt.quit()
    }

    ZEBPlayerSheet {
        anchors.fill: parent
        focus: true
        sheetModel: window.sheetModel
        onFullScreenToggled: window.toggleFullScreen()
    }
}
