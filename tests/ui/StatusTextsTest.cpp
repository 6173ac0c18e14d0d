#include <gtest/gtest.h>

#include <chrono>

#include "platform/text/NumberText.h"
#include "ui/model/MovieTexts.h"
#include "ui/model/RemainingTime.h"

namespace zeb {
namespace {

using std::chrono::milliseconds;

TEST(RemainingTimeTest, FollowsSmoothedSpeed) {
    const struct {
        int at;  ///< milliseconds
        double progress;
        const char* text;
    } samples[] = {
        {0, 0, "—"},           {250, 0.1, "—"},  // too close to the first
        {10000, 0.1, "1:30"},                    // 0.01 per second
        {10100, 0.2, "1:20"},                    // too close: the speed is unchanged
        {20000, 0.05, "1:35"},                   // falling: no sample
        {30000, 0.1, "1:30"},                    // no progress: a sample without a speed
        {40000, 0.3, "0:58"},                    // 0.02: 0.8 x 0.01 + 0.2 x 0.02 = 0.012
        {40251, 0.3, "0:58"},                    // just far enough apart: a sample without a speed
        {40501, 0.4, "0:50"},                    // too close
        {50251, 1.5, "0:00"},  {60000, -1, "—"},
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

TEST(ForecastTextTest, ShowsSizeOrProblemWithSuggestion) {
    SizeForecast forecast;
    forecast.bytes = 12'300'000;
    forecast.bytesPerSecond = 1'234'567;
    EXPECT_EQ(forecastText(forecast), "Size of the movie: about 12.3 MB, 1.2 MB per second");
    forecast.basis = ForecastBasis::bound;
    EXPECT_EQ(forecastText(forecast), "Size of the movie: at most 12.3 MB, 1.2 MB per second");
    forecast.isExact = true;
    EXPECT_EQ(forecastText(forecast), "Size of the movie: 12.3 MB, 1.2 MB per second");

    const std::string noSpace = "Not enough space: this movie would be about 12.3 MB, and ";
    forecast.spaceEndsAt = 3;
    EXPECT_EQ(forecastText(forecast), noSpace + byteCountText(0) + " are free.");
    forecast.freeSpace = 5'000'000;
    EXPECT_EQ(forecastText(forecast), noSpace + "5.0 MB are free.");
    forecast.suggestion.fps = 7;
    EXPECT_EQ(forecastText(forecast), noSpace + "5.0 MB are free. It fits at 7 fps.");
    forecast.suggestion.size = FrameSize{320, 200};
    EXPECT_EQ(forecastText(forecast), noSpace + "5.0 MB are free. It fits at 7 fps, or at 320 × 200.");
    forecast.suggestion.fps.reset();
    EXPECT_EQ(forecastText(forecast), noSpace + "5.0 MB are free. It fits at 320 × 200.");
    forecast.formatEndsAt = 61;
    forecast.suggestion = {};
    EXPECT_EQ(forecastText(forecast),
              "Too large: this movie would be about 12.3 MB, but a ZEB movie ends at "
              "4 GiB, here after 1:01.");
}

TEST(TargetDescriptionTest, DescribesMovieOfTheRun) {
    const struct {
        int requestedRate, sourceRate, fps;
        bool includeAudio;
        int channels;
        const char* sound;
    } cases[] = {
        {0, 25, 1, true, 0, "no sound"},       {1, 25, 1, true, 1, "mono sound"},
        {24, 25, 24, true, 2, "stereo sound"}, {26, 25, 25, false, 2, "no sound"},
        {5, 0, 1, false, 1, "no sound"},
    };
    for (const auto& c : cases) {
        Settings settings;
        settings.fps = c.requestedRate;
        settings.includeAudio = c.includeAudio;
        settings.audioChannels = c.channels;
        settings.qlModeNumber = 4;
        const SourceInfo source{1920, 1080, c.sourceRate};
        EXPECT_EQ(targetDescription(source, settings), (TargetDescription{{448, 256}, c.fps, 4, c.sound}));
        EXPECT_EQ(sourceTargetText(source, settings), "Video: 1920 × 1080, " + std::to_string(c.sourceRate) +
                                                          " fps   →   Movie: 448 × 256, " +
                                                          std::to_string(c.fps) + " fps, Mode 4, " + c.sound);
    }
}

TEST(VersionTextTest, OmitsBlankParts) {
    EXPECT_EQ(versionText("1.2", "7"), "v1.2 (7)");
    EXPECT_EQ(versionText(" ", "7"), "v— (7)");
    EXPECT_EQ(versionText("1.2", " "), "v1.2");
}

}  // namespace
}  // namespace zeb
