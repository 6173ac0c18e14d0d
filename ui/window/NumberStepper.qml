import QtQuick
import QtQuick.Controls
import ZEBStyle

// A number that is stepped or typed. A number set by the model is shown even if out of range.
SpinBox {
    id: stepper

    property string key
    property int number
    property int least
    property int most

    signal changed(number: int)

    from: Math.min(least, number)
    to: Math.max(most, number)
    value: number
    label: Texts.localizedText(key, [number])

    onValueModified: changed(value)
}
