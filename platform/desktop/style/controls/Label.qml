import QtQuick
import QtQuick.Templates as T

T.Label {
    color: enabled ? Theme.text : Theme.disabledText
    font.pixelSize: Theme.bodySize
    textFormat: Text.PlainText
}
