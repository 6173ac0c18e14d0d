#include "conversion/AudioTrack.h"

#include <gtest/gtest.h>

#include <limits>

#include "conversion/OutputName.h"

namespace zeb {
namespace {

constexpr std::uint32_t aac = 0x61616320;
constexpr std::uint32_t ac3 = 0x61632D33;

TEST(AudioTrackTest, Labels) {
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    const struct {
        SoundTrack track;
        int index;
        const char* label;
    } cases[] = {
        {{48000, 2, aac}, 0, "Spur 1 · Stereo · 48.0 kHz · aac "},
        {{48000, 6, ac3}, 1, "Spur 2 · 6ch · 48.0 kHz · ac-3"},
        {{44100, 1, 1}, 0, "Spur 1 · Mono · 44.1 kHz · 0x00000001"},
        {{800, {}, 0x7F414141}, 0, "Spur 1 · 800 Hz · 0x7F414141"},
        {{999.6, 2, {}}, 0, "Spur 1 · Stereo · 1000 Hz"},
        {{notANumber, {}, {}}, 2, "Spur 3"},
    };
    for (const auto& [track, index, label] : cases)
        EXPECT_EQ(audioTrackLabel(track, index), label);
}

TEST(OutputNameTest, IsSafeOnEverySystem) {
    const struct {
        const char* title;
        const char* name;
    } cases[] = {
        {"a/b:c", "a_b_c.zeb"}, {" \u2003Grüße\u00a0\n", "Grüße.zeb"}, {"\\/:?%*|\"<>", "__________.zeb"},
        {" \t", "holiday.zeb"}, {"Untitled ", "holiday.zeb"},
    };
    for (const auto& [title, name] : cases)
        EXPECT_EQ(proposedOutputName(title, "/films/holiday.mov"), name);
}

}  // namespace
}  // namespace zeb
