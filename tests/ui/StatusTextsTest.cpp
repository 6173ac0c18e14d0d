#include <gtest/gtest.h>

#include <chrono>
#include <limits>

#include "ui/DurationText.h"
#include "ui/RemainingTime.h"
#include "ui/TargetDescription.h"
#include "ui/VersionText.h"

namespace zeb {
namespace {

using std::chrono::milliseconds;

TEST(DurationTextTest, Durations) {
    const struct {
        double seconds;
        const char* text;
    } cases[] = {
        {0, "0:00"},
        {-0.0, "0:00"},
        {59.5, "1:00"},
        {425, "7:05"},
        {3599.4, "59:59"},
        {3599.5, "1:00:00"},
        {3723, "1:02:03"},
        {360000, "100:00:00"},
        {-1, "—"},
        {-0.1, "—"},
        {std::numeric_limits<double>::infinity(), "—"},
        {std::numeric_limits<double>::quiet_NaN(), "—"},
        {1e300, "—"},
    };
    for (const auto& [seconds, text] : cases)
        EXPECT_EQ(formatDuration(seconds), text) << seconds;
}

TEST(RemainingTimeTest, FollowsTheSmoothedSpeed) {
    const struct {
        int at;  ///< milliseconds
        double progress;
        const char* text;
    } samples[] = {
        {0, 0, "—"},           {100, 0.1, "—"},  // too close to the first
        {10000, 0.1, "1:30"},                    // 0.01 per second
        {10100, 0.2, "1:20"},                    // too close: the old speed
        {20000, 0.05, "1:35"},                   // falling: no sample
        {30000, 0.1, "1:30"},                    // standing still: no speed, but a sample
        {40000, 0.3, "0:58"},                    // 0.02: 0.8 x 0.01 + 0.2 x 0.02 = 0.012
        {50000, 1.5, "0:00"},  {60000, -1, "—"},
    };
    RemainingTime remaining;
    const Clock::Instant start{};
    for (const auto& [at, progress, text] : samples) {
        remaining.updateETA(progress, start + milliseconds(at));
        EXPECT_EQ(remaining.etaText(), text) << at;
    }
    remaining.reset();
    EXPECT_EQ(remaining.etaText(), "—");
    remaining.updateETA(0.5, start + milliseconds(70000));
    EXPECT_EQ(remaining.etaText(), "—") << "the speed is forgotten as well";
}

TEST(TargetDescriptionTest, AgreesWithTheRun) {
    Settings settings;
    const auto target = [&settings](int width, int height, SourceInfo source) {
        settings.width = width;
        settings.height = height;
        return targetDescription(source, settings);
    };
    settings.fps = 30;
    EXPECT_EQ(target(720, 576, {1920, 1080, 25}), (TargetDescription{{720, 400}, 25, 32, "stereo sound"}));
    settings.audioChannels = 1;
    settings.qlModeNumber = 4;
    EXPECT_EQ(target(1280, 720, {320, 240, 0}), (TargetDescription{{320, 240}, 1, 4, "mono sound"}));
    settings.audioChannels = 0;
    settings.fps = 0;
    EXPECT_EQ(target(0, 0, {1, 0, 60}), (TargetDescription{{64, 64}, 1, 4, "no sound"}));
    settings.audioChannels = 2;
    settings.includeAudio = false;
    EXPECT_EQ(sourceTargetText({320, 240, 25}, settings),
              "Video: 320 × 240, 25 fps   →   Movie: 64 × 64, 1 fps, Mode 4, no sound");
}

TEST(VersionTextTest, Versions) {
    EXPECT_EQ(versionText("1.2", "34"), "v1.2 (34)");
    EXPECT_EQ(versionText("1.2 ", " \n"), "v1.2 ");
    EXPECT_EQ(versionText(" ", ""), "v—");
}

}  // namespace
}  // namespace zeb
