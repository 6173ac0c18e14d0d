#include "platform/sdl/SDLAudioOutput.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cstring>
#include <future>

#include "platform/SampledSound.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

/// What a source is said to have ended with.
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

std::shared_ptr<SampledSoundSource> steady(std::size_t frames, float left, float right) {
    SampledSound sound{48000, {}};
    for (std::size_t i = 0; i < frames; ++i)
        sound.samples.insert(sound.samples.end(), {left, right});
    return std::make_shared<SampledSoundSource>(std::make_shared<const SampledSound>(std::move(sound)));
}

class SDLAudioOutputTest : public testing::Test {
protected:
    void use(const char* driver) {
        ::setenv("SDL_AUDIODRIVER", driver, 1);
        ::setenv("SDL_DISKAUDIOFILE", m_folder.file("heard.raw").c_str(), 1);
        ::setenv("SDL_DISKAUDIODELAY", "1", 1);  // milliseconds per buffer: faster than one listens
    }

    /// Frames that the disk driver has written, as left and right.
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

TEST_F(SDLAudioOutputTest, EverySampleReachesTheDeviceOnceAndTheDeviceIsGivenBack) {
    use("disk");
    SDLAudioOutput output({.closeAfter = 50ms, .retryAfter = 0ms});
    EXPECT_FALSE(output.isOpen());
    Answer answer;
    output.start(steady(1000, 0.25F, -0.5F), answer.finished());
    EXPECT_EQ(answer.wait(), "");
    while (output.isOpen())
        std::this_thread::yield();
    const auto frames = heard();
    EXPECT_EQ(std::count(frames.begin(), frames.end(), std::pair(0.25F, -0.5F)), 1000);
    EXPECT_EQ(std::count(frames.begin(), frames.end(), std::pair(0.0F, 0.0F)),
              static_cast<std::ptrdiff_t>(frames.size()) - 1000);
    // The next sound opens it anew.
    Answer second;
    output.start(steady(10, 0.25F, -0.5F), second.finished());
    EXPECT_EQ(second.wait(), "");
}

TEST_F(SDLAudioOutputTest, WithoutADeviceSourcesFinishWithTheReason) {
    use("no-such-driver");
    SDLAudioOutput output({.closeAfter = 50ms, .retryAfter = 24h});
    Answer first;
    output.start(steady(48000, 0.5F, 0.5F), first.finished());
    const std::string reason = first.wait();
    EXPECT_NE(reason, "");
    EXPECT_NE(reason, "no answer");
    // No other attempt is made that soon, even if it would succeed.
    use("dummy");
    Answer second;
    output.start(steady(48000, 0.5F, 0.5F), second.finished());
    EXPECT_EQ(second.wait(), reason);
    EXPECT_FALSE(output.isOpen());
}

TEST_F(SDLAudioOutputTest, EndsInTheMiddleOfASoundWithoutTellingAnybody) {
    use("dummy");
    Answer answer;
    bool isTold = false;
    {
        SDLAudioOutput output;
        const auto endless = steady(48000 * 60, 0.5F, 0.5F);
        output.start(endless, [&](const std::string&) { isTold = true; });
        output.start(steady(100, 0.5F, 0.5F), answer.finished());
        EXPECT_EQ(answer.wait(), "");
    }
    EXPECT_FALSE(isTold);
}

}  // namespace
}  // namespace zeb
