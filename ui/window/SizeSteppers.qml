import QtQuick
import QtQuick.Layouts

// The width and height of a preset.
RowLayout {
    id: steppers

    property int sideWidth
    property int sideHeight
    property int least
    property int most
    property int step

    signal widthChosen(number: int)
    signal heightChosen(number: int)

    spacing: 8

    NumberStepper {
        objectName: "width"
        Layout.preferredWidth: 152
        key: "width_format"
        number: steppers.sideWidth
        least: steppers.least
        most: steppers.most
        stepSize: steppers.step
        onChanged: number => steppers.widthChosen(number)
    }

    NumberStepper {
        objectName: "height"
        Layout.preferredWidth: 152
        key: "height_format"
        number: steppers.sideHeight
        least: steppers.least
        most: steppers.most
        stepSize: steppers.step
        onChanged: number => steppers.heightChosen(number)
    }
}
