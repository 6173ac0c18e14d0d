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
    // With room for a title bar on small screens.
    width: Math.max(minimumWidth, Math.min(920, Screen.desktopAvailableWidth))
    height: Math.max(minimumHeight, Math.min(620, Screen.desktopAvailableHeight - 40))
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
        isFullScreen: window.visibility === Window.FullScreen
        onFullScreenToggled: window.toggleFullScreen()
    }
}
