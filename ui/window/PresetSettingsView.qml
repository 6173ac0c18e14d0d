pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZEBMaker
import ZEBStyle

// The settings: sizes of the built-in presets, the user's presets, and the sounds.
ScrollPage {
    id: view

    required property PresetSettingsModel settings

    implicitWidth: 560
    implicitHeight: 500

    component Divider: Rectangle {
        Layout.fillWidth: true
        Layout.topMargin: 4
        Layout.bottomMargin: 4
        implicitHeight: 1
        color: Theme.cardBorder
    }

    component Hint: Label {
        Layout.fillWidth: true
        font.pixelSize: Theme.calloutSize
        color: Theme.secondaryText
        wrapMode: Text.Wrap
    }

    Item {
        width: view.width
        height: column.implicitHeight + 32

        ColumnLayout {
            id: column

            x: 16
            y: 16
            width: parent.width - 32
            spacing: 12

            Label {
                text: Texts.localizedText("presets_title")
                font.pixelSize: Theme.bodySize + 4
                font.weight: Font.Bold
                Accessible.role: Accessible.Heading
            }

            Repeater {
                model: [
                    Texts.localizedText("preset_dvd"),
                    Texts.localizedText("preset_hd"),
                    Texts.localizedText("preset_fhd")
                ]

                GroupBox {
                    id: box

                    required property string modelData
                    required property int index

                    Layout.fillWidth: true
                    title: modelData

                    SizeSteppers {
                        sideWidth: view.settings.builtInWidths[box.index]
                        sideHeight: view.settings.builtInHeights[box.index]
                        least: view.settings.leastSide
                        most: view.settings.mostBuiltInSide
                        step: view.settings.sideStep
                        onWidthChosen: number => view.settings.setBuiltInWidth(box.index, number)
                        onHeightChosen: number => view.settings.setBuiltInHeight(box.index, number)
                    }
                }
            }

            Divider {}

            GroupBox {
                Layout.fillWidth: true
                title: Texts.localizedText("more_presets")

                ColumnLayout {
                    width: parent.width
                    spacing: 8

                    Label {
                        visible: view.settings.count === 0
                        text: Texts.localizedText("no_extra_presets")
                        color: Theme.secondaryText
                    }

                    Repeater {
                        model: view.settings

                        RowLayout {
                            id: row

                            required property string name
                            required property int sideWidth
                            required property int sideHeight
                            required property int index

                            spacing: 8

                            TextField {
                                Layout.preferredWidth: 140
                                text: row.name
                                placeholderText: Texts.localizedText("name_field")
                                Accessible.name: Texts.localizedText("name_field")
                                onTextEdited: view.settings.setName(row.index, text)
                            }

                            SizeSteppers {
                                sideWidth: row.sideWidth
                                sideHeight: row.sideHeight
                                least: view.settings.leastSide
                                most: view.settings.mostUserSide
                                step: view.settings.sideStep
                                onWidthChosen: number => view.settings.setPresetWidth(row.index, number)
                                onHeightChosen: number => view.settings.setPresetHeight(row.index, number)
                            }

                            ToolButton {
                                text: Texts.localizedText("delete_preset")
                                icon.source: "qrc:/icons/trash.svg"
                                icon.color: Theme.destructive
                                implicitHeight: Theme.controlHeight
                                implicitWidth: 30
                                ToolTip.text: text
                                ToolTip.visible: hovered
                                ToolTip.delay: 600
                                onClicked: view.settings.removePreset(row.index)
                            }
                        }
                    }

                    RowLayout {
                        Layout.topMargin: 6
                        spacing: 8

                        Button {
                            id: addButton

                            text: Texts.localizedText("add_preset")
                            onClicked: addMenu.popup(addButton, 0, addButton.height + 2)

                            Menu {
                                id: addMenu

                                MenuItem {
                                    text: Texts.localizedText("empty_preset")
                                    onTriggered: view.settings.addEmptyPreset()
                                }

                                MenuItem {
                                    text: Texts.localizedText("preset_4k")
                                    onTriggered: view.settings.add4KPreset()
                                }
                            }
                        }

                        Item {
                            Layout.fillWidth: true
                        }

                        Button {
                            text: Texts.localizedText("save_changes")
                            onClicked: view.settings.save()
                        }
                    }

                    Hint {
                        text: Texts.localizedText("preset_hint")
                    }
                }
            }

            Divider {}

            GroupBox {
                Layout.fillWidth: true
                title: Texts.localizedText("sound_settings")

                ColumnLayout {
                    width: parent.width
                    spacing: 6

                    Switch {
                        text: Texts.localizedText("sound_effects_enabled")
                        checked: view.settings.soundEffectsEnabled
                        onToggled: view.settings.soundEffectsEnabled = checked
                    }

                    Hint {
                        text: Texts.localizedText("sound_effects_hint")
                    }
                }
            }
        }
    }
}
