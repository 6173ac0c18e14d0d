import QtQuick
import QtQuick.Controls
import ZEBPlayer
import ZEBStyle

// A window for one movie.
ApplicationWindow {
    id: window

    required property PlayerSheetModel sheetModel

    readonly property bool isFullScreen: visibility === Window.FullScreen

    // Leaves full screen first, then closes.
    function leave() {
        if (isFullScreen)
            sheetModel.toggleFullScreen(window)
        else
            sheetModel.close()
    }

    objectName: "ZEBPlayerWindow"
    // Leaves room for a title bar on small screens.
    width: Math.max(minimumWidth, Math.min(920, Screen.desktopAvailableWidth))
    height: Math.max(minimumHeight, Math.min(620, Screen.desktopAvailableHeight - 40))
    minimumWidth: 700
    minimumHeight: 500
    color: Theme.window

    onClosing: sheetModel.close()

    // An open colour list handles Escape itself.
    Shortcut {
        sequences: ["Escape"]
        enabled: !sheet.listIsOpen
        onActivated: window.leave()
    }

    Shortcut {
        sequences: ["F", "F11"]
        onActivated: window.sheetModel.toggleFullScreen(window)
    }

    Shortcut {
        sequences: ["Ctrl+W"]
        onActivated: window.sheetModel.close()
    }

    Shortcut {
        sequences: ["Ctrl+Q"]
        onActivated: Qt.quit()
    }

    Shortcut {
        sequences: ["Ctrl+O"]
        onActivated: window.sheetModel.chooseVideo()
    }

    Shortcut {
        sequences: ["Ctrl+P"]
        onActivated: window.sheetModel.playMovie()
    }

    Shortcut {
        sequences: ["Ctrl+,"]
        onActivated: window.sheetModel.showSettings()
    }

    Shortcut {
        sequences: ["Ctrl+?", "F1"]
        onActivated: window.sheetModel.showHelp()
    }

    ZEBPlayerSheet {
        id: sheet

        anchors.fill: parent
        focus: true
        sheetModel: window.sheetModel
        isFullScreen: window.isFullScreen
        onFullScreenToggled: window.sheetModel.toggleFullScreen(window)
    }
}
