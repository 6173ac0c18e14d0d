#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <vector>

#include "player/PlaybackPeriod.h"
#include "player/SoundtrackPlayer.h"
#include "player/SoundtrackSource.h"
#include "player/TimeText.h"
#include "tests/player/RecordingOutput.h"

namespace zeb {
namespace {

using testing::ElementsAre;

std::shared_ptr<const Soundtrack> soundtrack(std::vector<std::uint8_t> bytes, int channels) {
    return std::make_shared<const Soundtrack>(Soundtrack{std::move(bytes), 20000, channels});
}

std::vector<float> rendered(SoundtrackSource& source, std::size_t frames) {
    std::vector<float> samples(2 * frames);
    samples.resize(2 * source.render(samples));
    return samples;
}

TEST(SoundtrackSourceTest, ConvertsBytesAsTheyArePlayed) {
    SoundtrackSource mono(soundtrack({0x80, 0x00, 0xFF}, 1), 0, false, 20000);
    EXPECT_THAT(rendered(mono, 2), ElementsAre(0.0F, 0.0F, -1.0F, -1.0F));
    EXPECT_THAT(rendered(mono, 2), ElementsAre(0.9921875F, 0.9921875F)) << "the end";

    // The incomplete frame at the end does not count, nor does what lies behind the second channel.
    SoundtrackSource six(soundtrack({0, 255, 1, 1, 1, 1, 128, 64, 1, 1, 1, 1, 7}, 6), 0, false, 20000);
    EXPECT_THAT(rendered(six, 4), ElementsAre(-1.0F, 0.9921875F, 0.0F, -0.5F));
}

TEST(SoundtrackSourceTest, LoopsFromWhereItBegan) {
    std::vector<std::uint8_t> bytes(300, 0);
    bytes[299] = 192;
    SoundtrackSource source(soundtrack(bytes, 1), 200, true, 20000);
    const std::vector<float> samples = rendered(source, 250);
    ASSERT_EQ(samples.size(), 500U);
    EXPECT_EQ(samples[0], 0) << "it fades in";
    EXPECT_GT(samples[2 * 30], samples[2 * 59]);
    EXPECT_EQ(samples[2 * 60], -1);
    for (const std::size_t last : {99U, 199U})
        EXPECT_EQ(samples[2 * last], 0.5F);
    EXPECT_EQ(samples[2 * 100], -1) << "a seamless loop does not fade again";
}

TEST(SoundtrackPlayerTest, KeepsStepWithThePicturesForTenMinutes) {
    constexpr double played = 600;
    test::RecordingOutput output;
    SoundtrackPlayer player(output);
    player.setSoundtrack(soundtrack({128, 128}, 1));
    for (int fps = 1; fps <= 60; ++fps) {
        player.start(0, fps, true);
        const double pictures = played / std::chrono::duration<double>(playbackPeriod(fps)).count() / fps;
        const double sound = played * output.started.back().source->sampleRate() / 20000;
        EXPECT_NEAR(pictures, sound, 0.02) << fps;
    }
}

TEST(TimeTextTest, Times) {
    const std::pair<double, const char*> cases[] = {{-1, "0:00"},      {59.9, "0:59"},    {61, "1:01"},
                                                    {3599.9, "59:59"}, {3725, "1:02:05"}, {1e300, "0:00"}};
    for (const auto& [seconds, text] : cases)
        EXPECT_EQ(formatTime(seconds), text) << seconds;
}

}  // namespace
}  // namespace zeb
