#include <gtest/gtest.h>

#include "platform/desktop/style/Texts.h"

namespace zeb {
namespace {

TEST(MenuLabelTest, AmpersandMarksShortcutLetter) {
    struct Case {
        const char* label;
        const char* plain;
        const char* letter;
        const char* styled;
    };
    const Case cases[] = {
        {"&File", "File", "f", "<u>F</u>ile"},
        {"Close &Window", "Close Window", "w", "Close <u>W</u>indow"},
        {"&Über", "Über", "ü", "<u>Ü</u>ber"},
        {"DVD", "DVD", "", "DVD"},
        {"", "", "", ""},
        {"Tom && <b>&Jerry</b>", "Tom & <b>Jerry</b>", "j", "Tom &amp; &lt;b&gt;<u>J</u>erry&lt;/b&gt;"},
        {"&&&&", "&&", "", "&amp;&amp;"},
        {"&One &Two", "One Two", "o", "<u>O</u>ne Two"},
        {"R&", "R&", "", "R&amp;"},
    };
    const Texts texts;
    for (const Case& it : cases) {
        SCOPED_TRACE(it.label);
        EXPECT_EQ(texts.plainLabel(it.label), it.plain);
        EXPECT_EQ(texts.letterOf(it.label), it.letter);
        EXPECT_EQ(texts.styledLabel(it.label), it.styled);
        // Names of presets are shown literally.
        EXPECT_EQ(texts.plainLabel(texts.labelOf(it.label)), it.label);
        EXPECT_EQ(texts.letterOf(texts.labelOf(it.label)), "");
    }
}

}  // namespace
}  // namespace zeb
