#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/AudioMixer.h"
#include "platform/fake/HandDrivenClock.h"
#include "player/PlaybackPeriod.h"
#include "player/SoundtrackPlayer.h"
#include "player/SoundtrackSource.h"
#include "player/TimeText.h"

namespace zeb {
namespace {

using testing::ElementsAre;

std::shared_ptr<const Soundtrack> soundtrack(std::vector<std::uint8_t> bytes, int channels) {
    return std::make_shared<const Soundtrack>(Soundtrack{std::move(bytes), 20000, channels});
}

/// Played from `first` on, by a clock that stands still.
SoundtrackSource sourceOf(std::vector<std::uint8_t> bytes, int channels, std::int64_t first = 0,
                          bool loops = false) {
    static const fake::HandDrivenClock clock;
    return {soundtrack(std::move(bytes), channels), first, loops, 20000, clock, clock.now()};
}

std::vector<float> rendered(SoundtrackSource& source, std::size_t frames) {
    std::vector<float> samples(2 * frames);
    samples.resize(2 * source.render(samples));
    return samples;
}

TEST(SoundtrackSourceTest, ConvertsBytesAsTheyArePlayed) {
    SoundtrackSource mono = sourceOf({0x80, 0x00, 0xFF}, 1);
    EXPECT_THAT(rendered(mono, 2), ElementsAre(0.0F, 0.0F, -1.0F, -1.0F));
    EXPECT_THAT(rendered(mono, 2), ElementsAre(0.9921875F, 0.9921875F)) << "the end";

    // The incomplete frame at the end does not count, nor does what lies behind the second channel.
    SoundtrackSource six = sourceOf({0, 255, 1, 1, 1, 1, 128, 64, 1, 1, 1, 1, 7}, 6);
    EXPECT_THAT(rendered(six, 4), ElementsAre(-1.0F, 0.9921875F, 0.0F, -0.5F));
}

TEST(SoundtrackSourceTest, LoopsFromWhereItBegan) {
    std::vector<std::uint8_t> bytes(300, 0);
    bytes[299] = 192;
    SoundtrackSource source = sourceOf(bytes, 1, 200, true);
    const std::vector<float> samples = rendered(source, 250);
    ASSERT_EQ(samples.size(), 500U);
    EXPECT_EQ(samples[0], 0) << "it fades in";
    EXPECT_GT(samples[2 * 30], samples[2 * 59]);
    EXPECT_EQ(samples[2 * 60], -1);
    for (const std::size_t last : {99U, 199U})
        EXPECT_EQ(samples[2 * last], 0.5F);
    EXPECT_EQ(samples[2 * 100], -1) << "a seamless loop does not fade again";
}

/// A sound device whose time is the clock's but for its faults, and what it plays.
class Device final : public AudioOutput {
public:
    explicit Device(fake::HandDrivenClock& clock) : m_clock(clock) { m_mixer.resume(rate); }
    void start(std::shared_ptr<AudioSource> source, Finished finished) override {
        m_mixer.start(std::move(source), std::move(finished));
    }
    void stop(const AudioSource& source) override { m_mixer.stop(source); }

    /// Plays for a hundredth of a second, by its own measure.
    void play() {
        m_mixer.render(m_samples);
        m_clock.advance(std::chrono::nanoseconds(static_cast<std::int64_t>(1e7 / speed)));
        heard = m_samples;
    }

    double speed = 1;  ///< of its crystal, against the clock
    std::vector<float> heard;

private:
    static constexpr int rate = 16000;
    fake::HandDrivenClock& m_clock;
    AudioMixer m_mixer;
    std::vector<float> m_samples = std::vector<float>(2 * rate / 100);
};

TEST(SoundtrackPlayerTest, KeepsStepWithThePictures) {
    using namespace std::chrono_literals;
    constexpr int mark = 75;  // the second in which the sound begins
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
        Device device(clock);
        device.speed = speed;
        SoundtrackPlayer player(device, clock);
        player.setSoundtrack(soundtrack(bytes, 1));
        clock.advance(1s);
        player.start(0, fps, false, clock.now());
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
            device.play();
        }
        EXPECT_NEAR(time(), pictures, 0.04) << fault;
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
