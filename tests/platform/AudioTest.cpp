#include <gmock/gmock.h>
#include <stdlib.h>

#include <atomic>
#include <complex>
#include <cstring>
#include <future>
#include <numbers>
#include <thread>

#include "platform/sound/AudioMixer.h"
#include "platform/sound/RateConverter.h"
#include "platform/sound/SampledSound.h"
#include "platform/sound/sdl/SDLAudioOutput.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

/// A source of `frames` frames. The right channel is `right` times the left one.
std::shared_ptr<SampledSoundSource> sourceOf(int rate, std::size_t frames,
                                             const std::function<double(std::size_t)>& value,
                                             double right = 1) {
    SampledSound sound{rate, {}};
    for (std::size_t i = 0; i < frames; ++i)
        sound.samples.insert(sound.samples.end(),
                             {static_cast<float>(value(i)), static_cast<float>(value(i) * right)});
    return std::make_shared<SampledSoundSource>(std::make_shared<const SampledSound>(std::move(sound)));
}

std::shared_ptr<SampledSoundSource> steady(std::size_t frames, double value, int rate = 48000) {
    return sourceOf(rate, frames, [value](std::size_t) { return value; });
}

std::vector<float> rendered(AudioMixer& mixer, std::size_t frames) {
    std::vector<float> samples(2 * frames, 9.0F);  // old buffer content must be overwritten
    mixer.render(samples);
    return samples;
}

TEST(AudioMixerTest, AddsSourcesAndReportsEndsInOrder) {
    AudioMixer mixer;
    mixer.resume(48000);
    std::vector<std::string> ends;
    const auto ending = [&](std::string name) {
        return [&ends, name](const std::string& error) { ends.push_back(name + error); };
    };
    mixer.start(steady(1100, 0.25), ending("long"));
    mixer.start(steady(600, 0.5), ending("short"));
    const auto samples = rendered(mixer, 1000);
    EXPECT_EQ(samples[0], 0.75F);
    EXPECT_EQ(samples[2 * 599 + 1], 0.75F);
    EXPECT_EQ(samples[2 * 600], 0.25F);
    EXPECT_THAT(ends, ElementsAre("short"));
    EXPECT_TRUE(mixer.isPlaying());
    EXPECT_EQ(rendered(mixer, 200)[2 * 99 + 1], 0.25F);
    EXPECT_THAT(ends, ElementsAre("short", "long"));
    EXPECT_FALSE(mixer.isPlaying());
    EXPECT_THAT(rendered(mixer, 2), ElementsAre(0, 0, 0, 0));
}

TEST(AudioMixerTest, LimitsSumsAndSilencesNaN) {
    AudioMixer mixer;
    mixer.resume(48000);
    mixer.start(sourceOf(48000, 3, [](std::size_t i) { return std::array{0.8, -3.0, std::nan("")}[i]; }), {});
    mixer.start(steady(3, 0.8), {});
    EXPECT_THAT(rendered(mixer, 3), ElementsAre(1, 1, -1, -1, 0, 0));
}

TEST(AudioMixerTest, StoppingFadesWithoutStep) {
    AudioMixer mixer;
    mixer.resume(48000);
    bool ended = false;
    const auto source = steady(48000, 0.8);
    mixer.start(source, [&](const std::string&) { ended = true; });
    float previous = rendered(mixer, 100).back();
    EXPECT_EQ(previous, 0.8F);
    mixer.stop(*source);
    for (const float sample : rendered(mixer, 512)) {
        EXPECT_NEAR(sample, previous, 0.005);
        previous = sample;
    }
    EXPECT_EQ(previous, 0);
    EXPECT_TRUE(ended);
}

TEST(AudioMixerTest, WaitsWhileSuspendedAndLosesNothing) {
    AudioMixer mixer;
    mixer.start(steady(2, 0.5), {});
    EXPECT_THAT(rendered(mixer, 2), ElementsAre(0, 0, 0, 0));
    mixer.resume(48000);
    EXPECT_FALSE(mixer.suspendIfSilentFor(0));
    EXPECT_THAT(rendered(mixer, 3), ElementsAre(0.5F, 0.5F, 0.5F, 0.5F, 0, 0));
    rendered(mixer, 9);
    EXPECT_FALSE(mixer.suspendIfSilentFor(10));
    rendered(mixer, 1);
    EXPECT_TRUE(mixer.suspendIfSilentFor(10));
    mixer.start(steady(1, 0.25), {});
    EXPECT_THAT(rendered(mixer, 1), ElementsAre(0, 0));
    std::string reason;
    mixer.start(steady(1, 0.5), [&](const std::string& error) { reason = error; });
    mixer.dropAll("no device");
    EXPECT_EQ(reason, "no device");
}

/// Amplitude of the frequency in the left channel, measured under a Hann window.
double amplitude(const std::vector<float>& samples, double frequency, double rate) {
    const double frames = static_cast<double>(samples.size()) / 2;
    std::complex<double> sum;
    for (std::size_t i = 0; i < samples.size(); i += 2) {
        const double t = static_cast<double>(i) / 2;
        const double hann = 1 - std::cos(2 * std::numbers::pi * t / frames);
        sum += std::polar(hann * samples[i], 2 * std::numbers::pi * frequency * t / rate);
    }
    return 2 * std::abs(sum) / frames;
}

TEST(RateConverterTest, KeepsTonesWithoutImagesOrAliases) {
    const struct {
        int from, to;
        double tone;     ///< Hz
        double phantom;  ///< frequency of its image or alias
        bool isKept;
    } cases[] = {
        {20000, 48000, 9000, 11000, true},
        {44100, 48000, 19000, 22900, true},  // 25100 Hz, folded
        {48000, 44100, 19000, 14900, true},
        {96000, 44100, 30000, 14100, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.from << " to " << c.to << ", " << c.tone << " Hz");
        const auto source = sourceOf(c.from, static_cast<std::size_t>(c.from), [&](std::size_t i) {
            return 0.5 * std::sin(2 * std::numbers::pi * c.tone * static_cast<double>(i) / c.from);
        });
        RateConverter converter(c.from, c.to);
        std::vector<float> samples(2 * static_cast<std::size_t>(c.to) + 1000);
        const std::size_t frames = converter.render(*source, samples);
        EXPECT_EQ(frames, static_cast<std::size_t>(c.to));
        // The middle only: at the ends the tone starts and stops abruptly.
        const std::vector<float> middle(samples.begin() + c.to / 4 * 2, samples.begin() + c.to * 3 / 4 * 2);
        EXPECT_NEAR(amplitude(middle, c.tone, c.to), c.isKept ? 0.5 : 0, 0.5e-3);
        EXPECT_LT(amplitude(middle, c.phantom, c.to), 0.5e-4);  // -80 dB
    }
}

TEST(RateConverterTest, OutputIsIndependentOfBufferSizes) {
    const auto tone = [](std::size_t i) { return std::sin(0.37 * static_cast<double>(i)); };
    std::vector<float> whole(2 * 5000), pieces(whole.size());
    RateConverter first(20000, 48000);
    const std::size_t frames = first.render(*sourceOf(20000, 1999, tone), whole);
    EXPECT_EQ(frames, 4798U);  // ceil(1999 x 2.4)
    RateConverter second(20000, 48000);
    const auto source = sourceOf(20000, 1999, tone);
    std::size_t done = 0;
    for (std::size_t step = 1; done < frames; step = step * 3 % 101) {
        const std::size_t count =
            second.render(*source, std::span(pieces).subspan(2 * done, 2 * std::min(step, frames - done)));
        ASSERT_GT(count, 0U);
        done += count;
    }
    EXPECT_EQ(whole, pieces);
    // Extreme ratios of rates must terminate.
    RateConverter absurd(1000000, 8);
    EXPECT_EQ(absurd.render(*steady(1000000, 0.5, 1000000), whole), 8U);
}

TEST(AudioMixerTest, ManyThreadsStartAndStopSources) {
    AudioMixer mixer;
    mixer.resume(48000);
    std::atomic<int> ended = 0;
    std::vector<std::jthread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 50; ++i) {
                const auto source = steady(700, 0.1, i % 2 == 0 ? 48000 : 20000);
                mixer.start(source, [&](const std::string&) { ++ended; });
                if (i % 3 == 0) mixer.stop(*source);
            }
        });
    }
    while (ended < 150)
        rendered(mixer, 256);
    EXPECT_FALSE(mixer.isPlaying());
}

/// Receives the error that a source finished with.
class Answer {
public:
    AudioOutput::Finished finished() {
        return [this](const std::string& error) { m_error.set_value(error); };
    }
    std::string wait() {
        auto error = m_error.get_future();
        return error.wait_for(20s) == std::future_status::ready ? error.get() : "no answer";
    }

private:
    std::promise<std::string> m_error;
};

class SDLAudioOutputTest : public testing::Test {
protected:
    void use(const char* driver) {
        ::setenv("SDL_AUDIODRIVER", driver, 1);
        ::setenv("SDL_DISKAUDIOFILE", m_folder.file("heard.raw").c_str(), 1);
        ::setenv("SDL_DISKAUDIODELAY", "1", 1);  // milliseconds per buffer, faster than real time
    }

    /// Frames that the disk driver has written, as pairs of left and right.
    std::vector<std::pair<float, float>> heard() const {
        const std::string bytes = test::contents(m_folder.file("heard.raw"));
        std::vector<std::pair<float, float>> frames(bytes.size() / 8);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            std::memcpy(&frames[i].first, bytes.data() + 8 * i, 4);
            std::memcpy(&frames[i].second, bytes.data() + 8 * i + 4, 4);
        }
        return frames;
    }

    test::TemporaryFolder m_folder;
};

TEST_F(SDLAudioOutputTest, PlaysEverySampleOnceThenClosesDevice) {
    use("disk");
    SDLAudioOutput output({.closeAfter = 50ms, .retryAfter = 0ms});
    EXPECT_FALSE(output.isOpen());
    Answer answer;
    output.start(sourceOf(
                     48000, 1000, [](std::size_t) { return 0.25; }, -2),
                 answer.finished());
    EXPECT_EQ(answer.wait(), "");
    while (output.isOpen())
        std::this_thread::yield();
    const auto frames = heard();
    EXPECT_EQ(std::count(frames.begin(), frames.end(), std::pair(0.25F, -0.5F)), 1000);
    EXPECT_EQ(std::count(frames.begin(), frames.end(), std::pair(0.0F, 0.0F)),
              static_cast<std::ptrdiff_t>(frames.size()) - 1000);
    // The next sound opens the device again.
    Answer second;
    output.start(steady(10, 0.25), second.finished());
    EXPECT_EQ(second.wait(), "");
}

TEST_F(SDLAudioOutputTest, SourcesFinishWithErrorWithoutDevice) {
    use("no-such-driver");
    SDLAudioOutput output({.closeAfter = 50ms, .retryAfter = 24h});
    Answer first;
    output.start(steady(48000, 0.5), first.finished());
    const std::string reason = first.wait();
    EXPECT_NE(reason, "");
    EXPECT_NE(reason, "no answer");
    // No second attempt before `retryAfter`, even if it would succeed.
    use("dummy");
    Answer second;
    output.start(steady(48000, 0.5), second.finished());
    EXPECT_EQ(second.wait(), reason);
    EXPECT_FALSE(output.isOpen());
}

TEST_F(SDLAudioOutputTest, DestructionStopsSoundSilently) {
    use("dummy");
    Answer answer;
    bool isTold = false;
    {
        SDLAudioOutput output;
        const auto endless = steady(48000 * 60, 0.5);
        output.start(endless, [&](const std::string&) { isTold = true; });
        output.start(steady(100, 0.5), answer.finished());
        EXPECT_EQ(answer.wait(), "");
    }
    EXPECT_FALSE(isTold);
}

}  // namespace
}  // namespace zeb
