#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "player/PlaybackPeriod.h"
#include "player/SoundtrackPlayer.h"
#include "player/SoundtrackSource.h"
#include "tests/doubles/HandDrivenClock.h"
#include "tests/player/HandDrivenDevice.h"

namespace zeb {
namespace {

using testing::ElementsAre;

std::shared_ptr<const Soundtrack> soundtrack(std::vector<std::uint8_t> bytes, int channels) {
    return std::make_shared<const Soundtrack>(Soundtrack{std::move(bytes), 20000, channels});
}

/// A source that plays from frame `first` on, with a stopped clock.
SoundtrackSource sourceOf(std::vector<std::uint8_t> bytes, int channels, std::int64_t first = 0,
                          std::optional<double> length = {}) {
    static const fake::HandDrivenClock clock;
    auto sound = soundtrack(std::move(bytes), channels);
    const auto stored = static_cast<double>(SoundtrackSource::frameCount(*sound));
    return {std::move(sound), first, length.value_or(stored), 20000, clock, clock.now()};
}

std::vector<float> rendered(SoundtrackSource& source, std::size_t frames) {
    std::vector<float> samples(2 * frames);
    samples.resize(2 * source.render(samples));
    return samples;
}

TEST(SoundtrackSourceTest, ConvertsBytesToSamplesOnRequest) {
    SoundtrackSource mono = sourceOf({0x80, 0x00, 0xFF}, 1);
    EXPECT_THAT(rendered(mono, 2), ElementsAre(0.0F, 0.0F, -1.0F, -1.0F));
    EXPECT_THAT(rendered(mono, 2), ElementsAre(0.9921875F, 0.9921875F)) << "the end";

    // The incomplete frame at the end and the channels after the second one are ignored.
    SoundtrackSource six = sourceOf({0, 255, 1, 1, 1, 1, 128, 64, 1, 1, 1, 1, 7}, 6);
    EXPECT_THAT(rendered(six, 4), ElementsAre(-1.0F, 0.9921875F, 0.0F, -0.5F));
}

TEST(SoundtrackSourceTest, LoopsWholeSoundFromAnyStart) {
    std::vector<std::uint8_t> bytes(300, 0);
    bytes[299] = 192;
    SoundtrackSource source = sourceOf(bytes, 1, 200);
    source.setLastPass(1);
    const std::vector<float> samples = rendered(source, 500);
    ASSERT_EQ(samples.size(), 800U) << "the rest and the whole";
    EXPECT_TRUE(source.hasEnded());
    EXPECT_EQ(samples[0], 0) << "it fades in";
    EXPECT_GT(samples[2 * 30], samples[2 * 59]);
    EXPECT_EQ(samples[2 * 60], -1);
    for (const std::size_t last : {99U, 399U})
        EXPECT_EQ(samples[2 * last], 0.5F);
    EXPECT_EQ(samples[2 * 100], -1) << "a seamless loop does not fade again";
}

TEST(SoundtrackSourceTest, LoopLengthMatchesMovieLength) {
    const struct {
        double length;
        int passes;
        std::size_t frames, sounding;
    } cases[] = {
        {5, 1, 5, 5},          // cut
        {14, 2, 28, 20},       // filled up with silence
        {10.25, 5, 51, 50},    // each end is rounded from the start of the sound
        {0x1p-1 + 1, 6, 9, 9}  // shorter than two samples
    };
    for (const auto& [length, passes, frames, sounding] : cases) {
        SoundtrackSource source = sourceOf(std::vector<std::uint8_t>(10, 255), 1, 0, length);
        source.setLastPass(passes - 1);
        const std::vector<float> samples = rendered(source, 1000);
        EXPECT_EQ(samples.size(), 2 * frames) << length;
        EXPECT_EQ(std::count_if(samples.begin(), samples.end(), [](float sample) { return sample > 0; }),
                  2 * static_cast<std::ptrdiff_t>(sounding))
            << length;
        source.setLastPass(SoundtrackSource::endless);
        EXPECT_TRUE(source.hasEnded()) << "nothing follows the end";
    }
}

TEST(SoundtrackPlayerTest, SoundStaysInStepWithPictures) {
    using namespace std::chrono_literals;
    constexpr int mark = 75;  // the sound starts in this second
    std::vector<std::uint8_t> bytes(std::size_t{20000} * (mark + 1), 128);
    std::fill(bytes.begin() + std::ptrdiff_t{20000} * mark, bytes.end(), 255);
    const struct {
        const char* fault;
        int fps;
        double speed;
        std::chrono::milliseconds opening, waiting;
    } cases[] = {
        {"none", 25, 1, 0ms, 0ms},
        {"sound that comes before its picture", 25, 1, -300ms, 0ms},
        {"pictures by whole milliseconds", 30, 1, 0ms, 0ms},
        {"and shorter ones", 60, 1, 0ms, 0ms},
        {"a fast device", 25, 1.001, 0ms, 0ms},
        {"a slow device", 30, 0.999, 0ms, 0ms},
        {"a device that is opened first", 25, 1, 400ms, 0ms},
        {"a device that had to wait for the processor", 25, 1, 0ms, 300ms},
        {"one that waits a little, now and then", 25, 1.0003, 30ms, 30ms},
    };
    for (const auto& [fault, fps, speed, opening, waiting] : cases) {
        fake::HandDrivenClock clock;
        test::HandDrivenDevice device(16000);
        SoundtrackPlayer player(device, clock);
        player.setSoundtrack(soundtrack(bytes, 1));
        clock.advance(1s);
        player.start(0, {(mark + 1) * fps, fps}, clock.now());
        clock.advance(opening);
        const auto time = [&] {
            return std::chrono::duration<double>(clock.now().time_since_epoch()).count();
        };
        const double pictures = 1 + mark * fps * std::chrono::duration<double>(playbackPeriod(fps)).count();
        double nextWait = 21;
        while (device.heard.empty() || device.heard.back() < 0.4F) {
            ASSERT_LT(time(), pictures + 1) << fault;
            if (time() > nextWait) {
                clock.advance(waiting);
                nextWait += 30;
            }
            // 0.01 s on the device's clock.
            device.play(10ms);
            clock.advance(std::chrono::nanoseconds(static_cast<std::int64_t>(1e7 / speed)));
        }
        EXPECT_NEAR(time(), pictures, 0.04) << fault;
    }
}

}  // namespace
}  // namespace zeb
