#include "conversion/AudioTrack.h"

#include <gtest/gtest.h>

#include <limits>

#include "conversion/OutputName.h"

namespace zeb {
namespace {

TEST(AudioTrackTest, Labels) {
    const struct {
        SoundTrack track;
        int index;
        const char* label;
    } cases[] = {
        {{48000, 6, 0x61632D33}, 1, "Spur 2 · 6ch · 48.0 kHz · ac-3"},
        {{44100, 1, 1}, 0, "Spur 1 · Mono · 44.1 kHz · 0x00000001"},
        {{999.6, 2, {}}, 0, "Spur 1 · Stereo · 1000 Hz"},
        {{std::numeric_limits<double>::quiet_NaN(), {}, {}}, 2, "Spur 3"},
    };
    for (const auto& [track, index, label] : cases)
        EXPECT_EQ(audioTrackLabel(track, index), label);
}

TEST(OutputNameTest, IsSafeOnEverySystem) {
    const std::pair<const char*, const char*> cases[] = {
        {" \u2003Grüße\u00a0\n", "Grüße.zeb"},
        {"\\/:?%*|\"<>", "__________.zeb"},
        {" \t", "holiday.zeb"},
        {"Untitled ", "holiday.zeb"},
    };
    for (const auto& [title, name] : cases)
        EXPECT_EQ(proposedOutputName(title, "/films/holiday.mov"), name);
}

}  // namespace
}  // namespace zeb
