#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>

#include "platform/SampledSound.h"
#include "platform/fake/FakeUserDefaults.h"
#include "platform/fake/HandDrivenMainActor.h"
#include "platform/ffmpeg/FFmpegMediaLibrary.h"
#include "ui/AppSoundPlayer.h"

namespace zeb {
namespace {

class SilentOutput final : public AudioOutput {
public:
    void start(std::shared_ptr<AudioSource>, Finished) override { ++count; }
    void stop(const AudioSource&) override {}
    int count = 0;
};

class ForbiddenBeep final : public SystemBeep {
public:
    void beep() override { ADD_FAILURE() << "a sound is missing"; }
};

TEST(SoundFilesTest, AreShortCleanAndGentle) {
    const auto media = makeFFmpegMediaLibrary(MediaLogging::silent);
    std::set<std::vector<float>> different;
    for (const auto& file : std::filesystem::directory_iterator(ZEB_RESOURCE_FOLDER "/sounds")) {
        if (file.path().extension() != ".aiff") continue;
        SCOPED_TRACE(file.path().filename());
        EXPECT_LT(file.file_size(), 100000U);
        const auto sound = readSampledSound(*media, file.path());
        const auto& samples = sound->samples;
        const double seconds = static_cast<double>(samples.size()) / 2 / sound->sampleRate;
        EXPECT_GT(seconds, 0.2);
        EXPECT_LE(seconds, 1.0);
        EXPECT_NEAR(samples.front(), 0, 0.001);
        EXPECT_NEAR(samples.back(), 0, 0.001);
        double sum = 0;
        double peak = 0;
        double steepest = 0;
        for (std::size_t i = 0; i < samples.size(); i += 2) {
            sum += samples[i];
            peak = std::max<double>(peak, std::abs(samples[i]));
            if (i > 0) steepest = std::max<double>(steepest, std::abs(samples[i] - samples[i - 2]));
        }
        EXPECT_GT(peak, 0.35);
        EXPECT_LT(peak, 0.505);     // two at once do not distort
        EXPECT_LT(steepest, 0.25);  // no click
        EXPECT_NEAR(sum / static_cast<double>(samples.size() / 2), 0, 1e-4);
        different.insert(samples);
    }
    EXPECT_EQ(different.size(), 7U);
}

}  // namespace
}  // namespace zeb
