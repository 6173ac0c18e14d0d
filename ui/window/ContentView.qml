pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZEBMaker
import ZEBStyle

// The converter: files, settings, progress and log of one conversion.
FocusScope {
    id: view

    required property ContentViewModel content
    required property url backgroundPicture

    readonly property ConverterViewModel vm: content.vm
    readonly property SettingsModel settings: content.vm.settings
    readonly property int ioButtonWidth: 140
    readonly property int windowWidth: 970
    readonly property int windowHeight: 665
    readonly property int labelWidth: 70

    implicitWidth: windowWidth
    implicitHeight: windowHeight

    // Starts a run for Return, after the number being typed has been committed.
    Timer {
        id: starting

        interval: 0
        onTriggered: view.content.start()
    }

    component RowLabel: Label {
        Layout.preferredWidth: view.labelWidth
        color: Theme.secondaryText
        elide: Text.ElideRight
    }

    component Note: Label {
        Layout.fillWidth: true
        font.pixelSize: Theme.calloutSize
        textFormat: Text.PlainText
        color: Theme.secondaryText
        wrapMode: Text.Wrap
    }

    // Return starts a run here too, unless the list is open.
    component Picker: ComboBox {
        Keys.onReturnPressed: event => popup.visible ? event.accepted = false : starting.start()
        Keys.onEnterPressed: event => popup.visible ? event.accepted = false : starting.start()
    }

    component Gap: Item {
        Layout.fillWidth: true
    }

    Image {
        width: Math.min(view.windowWidth, view.width)
        height: Math.min(view.windowHeight, view.height)
        source: view.backgroundPicture
        fillMode: Image.Stretch
        Accessible.ignored: true
    }

    // Scroll to the progress group when a run starts or an error occurs.
    Connections {
        target: view.vm

        function onIsRunningChanged() {
            if (view.vm.isRunning)
                page.reveal(progressGroup)
        }

        function onLastErrorChanged() {
            if (view.vm.lastErrorText !== "")
                page.reveal(progressGroup)
        }
    }

    ScrollPage {
        id: page

        anchors.fill: parent
        leastWidth: 920

        Item {
            width: parent.width
            implicitHeight: card.height + 28

            Rectangle {
                id: card

                x: 14
                y: 14
                width: parent.width - 28
                height: rows.implicitHeight + 24
                radius: 8
                color: Theme.card
                opacity: 0.96
                border.color: Theme.cardBorder
            }

            ColumnLayout {
                id: rows

                x: card.x + 12
                y: card.y + 12
                width: card.width - 24
                spacing: 8

                RowLayout {
                    spacing: 8

                    Label {
                        text: Texts.localizedText("app_title")
                        font.pixelSize: Theme.titleSize
                        font.weight: Font.Bold
                        Layout.alignment: Qt.AlignBaseline
                        Accessible.role: Accessible.Heading
                    }

                    Label {
                        text: view.content.versionText
                        font.pixelSize: Theme.calloutSize
                        color: Theme.secondaryText
                        Layout.alignment: Qt.AlignBaseline
                    }
                }

                FormGroup {
                    Layout.fillWidth: true
                    title: Texts.localizedText("io_group")

                    FileRow {
                        objectName: "input"
                        text: Texts.localizedText("choose_video")
                        buttonWidth: view.ioButtonWidth
                        path: view.vm.inputPath
                        onChosen: view.vm.chooseInput()
                    }

                    FileRow {
                        objectName: "output"
                        text: Texts.localizedText("save_zeb_as")
                        buttonWidth: view.ioButtonWidth
                        buttonEnabled: view.vm.inputPath !== ""
                        path: view.vm.outputPath
                        onChosen: view.vm.chooseOutput()
                    }
                }

                FormGroup {
                    Layout.fillWidth: true
                    title: Texts.localizedText("settings_group")

                    RowLayout {
                        spacing: 10

                        RowLabel {
                            text: Texts.localizedText("title_label")
                        }

                        TextField {
                            objectName: "title"
                            Layout.fillWidth: true
                            text: view.settings.title
                            placeholderText: Texts.localizedText("title_help")
                            Accessible.name: Texts.localizedText("title_label")
                            onTextEdited: view.settings.title = text
                        }
                    }

                    RowLayout {
                        spacing: 10

                        RowLabel {
                            text: Texts.localizedText("mode_label")
                        }

                        SegmentedControl {
                            objectName: "mode"
                            Layout.preferredWidth: Math.max(340, implicitWidth)
                            name: Texts.localizedText("mode_label")
                            choices: [
                                { text: Texts.localizedText("mode32_desc"), value: 32 },
                                { text: Texts.localizedText("mode4_desc"), value: 4 }
                            ]
                            value: view.settings.qlModeNumber
                            onChosen: value => view.settings.qlModeNumber = value
                        }
                    }

                    RowLayout {
                        spacing: 14

                        NumberStepper {
                            objectName: "width"
                            Layout.preferredWidth: 158
                            key: "width_format"
                            number: view.settings.width
                            least: 64
                            most: 4096
                            stepSize: 8
                            onChanged: number => view.settings.width = number
                        }

                        NumberStepper {
                            objectName: "height"
                            Layout.preferredWidth: 158
                            key: "height_format"
                            number: view.settings.height
                            least: 64
                            most: 4096
                            stepSize: 8
                            onChanged: number => view.settings.height = number
                        }

                        Switch {
                            objectName: "preserveAspect"
                            text: Texts.localizedText("preserve_aspect")
                            checked: view.settings.preserveAspect
                            onToggled: view.settings.preserveAspect = checked
                        }

                        Gap {}

                        Picker {
                            objectName: "presets"
                            Layout.preferredWidth: 170
                            model: view.content.presetTitles
                            currentIndex: view.content.presetIndex
                            Accessible.name: Texts.localizedText("presets_title")
                            onActivated: index => view.content.presetIndex = index
                        }
                    }

                    RowLayout {
                        spacing: 14

                        NumberStepper {
                            objectName: "fps"
                            Layout.preferredWidth: 230
                            key: "fps_format"
                            number: view.settings.fps
                            least: 1
                            most: 60
                            enabled: !view.settings.fpsFromSource
                            onChanged: number => view.settings.fps = number
                        }

                        Switch {
                            objectName: "fpsFromSource"
                            text: Texts.localizedText("fps_from_source")
                            checked: view.settings.fpsFromSource
                            onToggled: view.settings.fpsFromSource = checked
                        }

                        Switch {
                            objectName: "loop"
                            text: Texts.localizedText("loop")
                            checked: view.settings.loop
                            onToggled: view.settings.loop = checked
                        }
                    }

                    RowLayout {
                        spacing: 10

                        Switch {
                            objectName: "includeAudio"
                            text: Texts.localizedText("audio_20khz")
                            checked: view.settings.includeAudio
                            onToggled: view.settings.includeAudio = checked
                        }

                        RowLabel {
                            Layout.leftMargin: 8
                            Layout.preferredWidth: implicitWidth
                            text: Texts.localizedText("track_label")
                        }

                        Picker {
                            objectName: "track"

                            // Shows the last track for an index past the end, as a run uses it.
                            readonly property int chosenTrack: Math.min(view.settings.audioTrackIndex, count - 1)

                            Layout.fillWidth: true
                            enabled: view.settings.includeAudio
                            model: view.vm.audioTrackLabels
                            currentIndex: chosenTrack
                            // A new model resets the index to the first entry, so bind it again.
                            onModelChanged: currentIndex = Qt.binding(() => chosenTrack)
                            Accessible.name: Texts.localizedText("track_label")
                            onActivated: index => view.settings.audioTrackIndex = index
                        }

                        RowLabel {
                            Layout.leftMargin: 8
                            Layout.preferredWidth: implicitWidth
                            text: Texts.localizedText("channel_label")
                        }

                        SegmentedControl {
                            objectName: "channels"
                            enabled: view.settings.includeAudio
                            name: Texts.localizedText("channel_label")
                            choices: [
                                { text: Texts.localizedText("channel_off"), value: 0 },
                                { text: Texts.localizedText("channel_mono"), value: 1 },
                                { text: Texts.localizedText("channel_stereo"), value: 2 }
                            ]
                            value: view.settings.audioChannels
                            onChosen: value => view.settings.audioChannels = value
                        }
                    }

                    Switch {
                        objectName: "dither"
                        text: Texts.localizedText("dither")
                        enabled: view.settings.qlModeNumber !== 32
                        checked: view.settings.dither
                        onToggled: view.settings.dither = checked
                    }

                    ColumnLayout {
                        visible: view.content.sourceTargetText !== ""
                        spacing: 3

                        Note {
                            objectName: "sourceTarget"
                            text: view.content.sourceTargetText
                        }

                        Note {
                            objectName: "forecast"
                            visible: text !== ""
                            text: view.content.forecastText
                            color: view.content.forecastIsWarning ? Theme.warning : Theme.secondaryText
                            font.weight: view.content.forecastIsWarning ? Font.DemiBold : Font.Normal
                        }
                    }
                }

                FormGroup {
                    id: progressGroup

                    Layout.fillWidth: true
                    title: Texts.localizedText("status_group")
                    rowSpacing: 6

                    ProgressBar {
                        objectName: "progress"
                        Layout.fillWidth: true
                        Layout.topMargin: 9
                        value: view.vm.progress
                        Accessible.name: Texts.localizedText("status_group")
                    }

                    Note {
                        objectName: "status"
                        text: view.vm.statusText
                    }

                    RowLayout {
                        // Keep the space when hidden, so that the buttons below do not move away from the
                        // mouse.
                        opacity: view.vm.isRunning ? 1 : 0
                        spacing: 20

                        Note {
                            objectName: "runSource"
                            Layout.fillWidth: false
                            Layout.maximumWidth: 380
                            text: view.content.runSourceText
                            color: Theme.text
                            wrapMode: Text.NoWrap
                            elide: Text.ElideMiddle
                            Accessible.ignored: !view.vm.isRunning
                        }

                        Note {
                            objectName: "times"
                            text: view.content.timesText
                            Accessible.ignored: !view.vm.isRunning
                        }
                    }

                    Note {
                        objectName: "error"
                        visible: text !== ""
                        text: view.vm.lastErrorText
                        color: Theme.destructive
                    }
                }

                RowLayout {
                    spacing: 10

                    Button {
                        objectName: "start"
                        Layout.preferredWidth: Math.max(view.ioButtonWidth, implicitWidth)
                        text: view.vm.isRunning ? Texts.localizedText("Konvertiere…") : Texts.localizedText("Start")
                        highlighted: true
                        enabled: view.vm.canStart
                        onClicked: view.content.start()
                    }

                    Button {
                        objectName: "cancel"
                        text: Texts.localizedText("cancel")
                        enabled: view.vm.isRunning || view.vm.isWaiting
                        onClicked: view.vm.cancel()
                    }

                    Button {
                        objectName: "play"
                        text: Texts.localizedText("play_zeb")
                        onClicked: view.content.playMovie()
                    }

                    Gap {}

                    Button {
                        objectName: "copyLog"
                        text: Texts.localizedText("copy_log")
                        enabled: view.vm.logText !== ""
                        onClicked: view.vm.copyLog()
                    }
                }

                FormGroup {
                    Layout.fillWidth: true
                    title: Texts.localizedText("log_group")

                    LogView {
                        objectName: "log"
                        Layout.fillWidth: true
                        Layout.preferredHeight: 90
                        name: Texts.localizedText("log_group")
                        text: view.vm.logText
                    }
                }
            }
        }
    }

    // Return starts a run wherever the keyboard focus is.
    Keys.onReturnPressed: starting.start()
    Keys.onEnterPressed: starting.start()
}
