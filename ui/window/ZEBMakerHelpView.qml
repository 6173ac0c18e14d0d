import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZEBStyle

// The help page.
ScrollPage {
    id: page

    readonly property int pageWidth: 760

    activeFocusOnTab: true
    focus: true
    Keys.onUpPressed: flick(0, 500)
    Keys.onDownPressed: flick(0, -500)
    Keys.onPressed: event => {
        if (event.key !== Qt.Key_PageUp && event.key !== Qt.Key_PageDown)
            return
        const distance = event.key === Qt.Key_PageDown ? page.height - 40 : 40 - page.height
        page.contentY = Math.max(0, Math.min(page.contentY + distance, page.contentHeight - page.height))
        event.accepted = true
    }

    Item {
        width: Math.min(page.width, page.pageWidth)
        height: column.implicitHeight + 56

        ColumnLayout {
            id: column

            x: 28
            y: 28
            width: parent.width - 56
            spacing: 24

            ColumnLayout {
                spacing: 10

                Label {
                    text: Texts.localizedText("help_kicker").toUpperCase()
                    font.pixelSize: Theme.captionSize
                    font.weight: Font.DemiBold
                    font.letterSpacing: 1
                    color: Theme.secondaryText
                }

                Label {
                    Layout.fillWidth: true
                    text: Texts.localizedText("help_title")
                    font.pixelSize: 34
                    font.weight: Font.Bold
                    wrapMode: Text.Wrap
                    Accessible.role: Accessible.Heading
                }

                Label {
                    Layout.fillWidth: true
                    text: Texts.localizedText("help_intro")
                    font.pixelSize: Theme.bodySize + 2
                    color: Theme.secondaryText
                    wrapMode: Text.Wrap
                    lineHeight: 1.15
                }
            }

            HelpStepGrid {
                Layout.fillWidth: true
                steps: [
                    ["1", Texts.localizedText("help_step_1_title"), Texts.localizedText("help_step_1_body")],
                    ["2", Texts.localizedText("help_step_2_title"), Texts.localizedText("help_step_2_body")],
                    ["3", Texts.localizedText("help_step_3_title"), Texts.localizedText("help_step_3_body")],
                    ["4", Texts.localizedText("help_step_4_title"), Texts.localizedText("help_step_4_body")]
                ]
            }

            HelpSection {
                icon: "wand"
                title: Texts.localizedText("help_section_quick_start_title")
                text: Texts.localizedText("help_section_quick_start_body")
            }

            HelpSection {
                icon: "play-rectangle"
                title: Texts.localizedText("help_section_player_title")
                text: Texts.localizedText("help_section_player_body")
            }

            HelpSection {
                icon: "open-files"
                title: Texts.localizedText("help_section_finder_title")
                text: Texts.localizedText("help_section_finder_body")
            }

            HelpSection {
                icon: "sliders"
                title: Texts.localizedText("help_section_presets_title")
                text: Texts.localizedText("help_section_presets_body")
            }

            HelpSection {
                icon: "gear"
                title: Texts.localizedText("help_section_settings_title")
                text: Texts.localizedText("help_section_settings_body")
            }

            HelpSection {
                icon: "lightbulb"
                title: Texts.localizedText("help_section_tips_title")
                text: Texts.localizedText("help_section_tips_body")
            }
        }
    }
}
