#include "conversion/plan/ConversionPlan.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "tests/doubles/FakeMedia.h"

namespace zeb {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

VideoTrack trackOf(double width, double height, float rate, AffineTransform transform = {}) {
    return {{width, height}, transform, rate};
}

/// A video with one track that ends at `end`.
fake::FakeAsset filmOf(VideoTrack track, double end) {
    track.end.time = end;
    return fake::FakeAsset({.videoTracks = {track}});
}

Settings settingsOf(int width, int height, bool preserveAspect, int fps = 10) {
    return {"", width, height, preserveAspect, fps};
}

TEST(TargetSize, FitsShrinksAndRounds) {
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    const struct {
        int sourceWidth, sourceHeight, width, height;
        bool preserveAspect;
        FrameSize expected;
    } cases[] = {
        {1920, 1080, 512, 256, true, {448, 256}},     {320, 240, 512, 256, true, {312, 240}},
        {1920, 1080, 512, 256, false, {512, 256}},    {640, 480, 1280, 720, false, {640, 360}},
        {1080, 1920, 512, 256, true, {144, 256}},   // portrait: the width is computed
        {1920, 1080, 256, 512, true, {256, 144}},   // the height is computed
        {1000, 500, 1000, 500, true, {1000, 496}},  // same proportions: the height is recomputed
        {7680, 4320, 7680, 4320, true, {4096, 4096}}, {1920, 1080, -5, 256, false, {64, 256}},
        {80, 616, 80, 616, true, {80, 616}},  // keeps the width, which rounding would make 79
        {1920, 1080, 0, 0, true, {64, 64}},           {1920, 1080, 71, 72, false, {64, 72}},
        {72, 4104, 72, 4104, false, {72, 4096}},      {0, -1, 512, 256, false, {64, 64}},
        {most, 1, most, most, true, {4096, 64}},      {1, most, least, least, true, {64, 64}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(targetSize(c.sourceWidth, c.sourceHeight, settingsOf(c.width, c.height, c.preserveAspect)),
                  c.expected)
            << c.sourceWidth << "x" << c.sourceHeight << " into " << c.width << "x" << c.height;
    }
}

TEST(Proposals, StayWithinTheirLimits) {
    const std::pair<int, int> sides[] = {{-8, 64}, {0, 64},      {1, 64},     {71, 64},
                                         {72, 72}, {4096, 4096}, {4104, 4096}};
    for (const auto& [source, proposed] : sides)
        EXPECT_EQ(proposedSide(source), proposed) << source;
    const std::pair<int, int> rates[] = {{0, 1}, {1, 1}, {2, 2}, {60, 60}, {61, 60}};
    for (const auto& [source, proposed] : rates)
        EXPECT_EQ(proposedRate(source), proposed) << source;
}

TEST(SourceInfo, RoundsUprightSizeAndFrameRate) {
    const AffineTransform quarterTurn{0, 1, -1, 0};
    EXPECT_EQ(sourceInfo(trackOf(1920, 1080, 25, quarterTurn)), (SourceInfo{1080, 1920, 25}));
    EXPECT_EQ(sourceInfo(trackOf(719.5, 0.2, 23.976F)), (SourceInfo{720, 0, 24}));
    EXPECT_EQ(sourceInfo(trackOf(10, 10, 0.5F)).fps, 1);
    EXPECT_EQ(sourceInfo(trackOf(10, 10, 0.49F)).fps, 25);
    for (const double unusable : {infinity, notANumber, 1e10}) {
        EXPECT_THROW(sourceInfo(trackOf(unusable, 10, 25)), MediaError);
        EXPECT_THROW(sourceInfo(trackOf(10, 10, static_cast<float>(unusable))), MediaError);
    }
}

TEST(ConversionPlan, CountsSecondsAndFrames) {
    const struct {
        float sourceRate;
        int requestedRate;
        double duration;
        int fps;
        std::int64_t seconds;
        double last;
    } cases[] = {
        {25, 10, 2.5, 10, 3, 2.5 - 1.0 / 600},
        {25, 10, 2.0, 10, 2, 2.0 - 1.0 / 600},
        {23.976F, 30, 0.3, 24, 1, 0.3 - 1.0 / 600},
        {0, 60, notANumber, 25, 1, 0},
        {25, 0, -4, 1, 1, 0},
    };
    for (const auto& c : cases) {
        const GrabSchedule schedule =
            grabSchedule(planConversion(filmOf(trackOf(640, 480, c.sourceRate), c.duration),
                                        settingsOf(512, 256, true, c.requestedRate)));
        EXPECT_EQ(schedule.count, c.seconds * c.fps) << c.duration;
        EXPECT_EQ(schedule.perSecond, c.fps);
        EXPECT_DOUBLE_EQ(schedule.last, c.last);
    }
}

TEST(ConversionPlan, LastsAsLongAsIncludedTracks) {
    const struct {
        double pictures;
        std::vector<double> sounds;
        bool includesAudio;
        int channels, track;
        double expected;
    } cases[] = {
        {10, {}, true, 2, 0, 10},         {10, {10.02}, true, 2, 0, 10},  // padding of an encoder
        {10, {10.0999}, true, 2, 0, 10},                                  //
        {10, {10.11}, true, 2, 0, 10.11}, {10, {30}, true, 1, 0, 30},
        {10, {30}, false, 2, 0, 10},      {10, {30}, true, 0, 0, 10},
        {10, {30, 20}, true, 2, 1, 20},   {10, {30, 20}, true, 2, 7, 20},  // the nearest track
        {10, {5}, true, 2, 0, 10},
    };
    for (const auto& c : cases) {
        fake::FakeFilm film{.duration = c.pictures};
        for (const double end : c.sounds)
            film.soundTrackFacts.push_back({.end = {end}});
        Settings settings;
        settings.includeAudio = c.includesAudio;
        settings.audioChannels = c.channels;
        settings.audioTrackIndex = c.track;
        EXPECT_EQ(planConversion(fake::FakeAsset(film), settings).duration, c.expected)
            << c.pictures << ", expected " << c.expected;
    }
}

TEST(BreakOffWarning, NamesPicturesElseIncludedSound) {
    const auto warning = [](TrackEnd pictures, TrackEnd sound, bool includesAudio = true) {
        fake::FakeFilm film;
        film.videoTracks.front().end = pictures;
        film.soundTrackFacts = {{.end = sound}};
        Settings settings;
        settings.includeAudio = includesAudio;
        const fake::FakeAsset asset(film);
        return breakOffWarning(asset, settings, planConversion(asset, settings));
    };
    EXPECT_EQ(warning({5.2, 20}, {5.1, 20}), "The film breaks off at 0:05 of 0:20.");
    EXPECT_EQ(warning({3599.6, 7259}, {9}), "The film breaks off at 1:00:00 of 2:00:59.");
    EXPECT_EQ(warning({20}, {5, 20}), "The sound breaks off at 0:05 of 0:20.");
    EXPECT_EQ(warning({20}, {5, 20}, false), "");
    EXPECT_EQ(warning({20}, {30}), "");
}

TEST(ConversionPlan, RejectsLengthsBeyondIntegerRange) {
    EXPECT_EQ(planConversion(filmOf(trackOf(0, 0, 25), 1), {}).source, (SourceInfo{1, 1, 25}));
    EXPECT_THROW(planConversion(filmOf(trackOf(640, 480, 25), infinity), {}), MediaError);
    EXPECT_THROW(planConversion(filmOf(trackOf(640, 480, 25), 0x1p63 / 600), {}), MediaError);
    EXPECT_EQ(planConversion(filmOf(trackOf(640, 480, 1), 1.5e16), {}).seconds, 15'000'000'000'000'000);
    EXPECT_THROW(
        planConversion(filmOf(trackOf(640, 480, 1e9F), 1e16), settingsOf(512, 256, true, 1000000000)),
        MediaError);
}

}  // namespace
}  // namespace zeb
