#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "codec/FrameDecoder.h"
#include "conversion/look/BlackBars.h"
#include "conversion/look/FrameGeometry.h"
#include "conversion/look/FrameMaker.h"
#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/SettingsError.h"
#include "tests/doubles/FakeMedia.h"

namespace zeb {
namespace {

using Fit = Shape::Fit;

Settings settingsOf(int width, int height, Fit fit = Fit::scale) {
    Settings settings;
    settings.width = width;
    settings.height = height;
    settings.shape.fit = fit;
    return settings;
}

TEST(FrameGeometry, FitsPicturesIntoFrames) {
    const struct {
        const char* name;
        int sourceWidth, sourceHeight;
        Settings settings;
        PixelShape pixels;
        int rotation;
        FrameSize size;
        PixelRectangle area;
        Framing framing;
    } cases[] = {
        {"scale", 640, 360, settingsOf(512, 512), {}, 0, {512, 288}, {0, 0, 512, 288}, {}},
        {"scale, QL pixels", 1440, 1080, settingsOf(512, 256), {2, 3}, 0, {512, 256}, {0, 0, 512, 256}, {}},
        {"scale, QL pixels, small",
         320,
         240,
         settingsOf(512, 256),
         {2, 3},
         0,
         {320, 160},
         {0, 0, 320, 160},
         {}},
        {"scale, wide pixels", 512, 256, settingsOf(512, 256), {2, 1}, 0, {256, 256}, {0, 0, 256, 256}, {}},
        {"scale, turned",
         640,
         360,
         settingsOf(512, 512),
         {},
         90,
         {288, 512},
         {0, 0, 288, 512},
         {.quarterTurns = 1}},
        {"pad, wide", 640, 320, settingsOf(512, 512, Fit::pad), {}, 0, {512, 512}, {0, 128, 512, 256}, {}},
        {"pad, tall", 320, 640, settingsOf(512, 512, Fit::pad), {}, 0, {512, 512}, {128, 0, 256, 512}, {}},
        {"pad, turned",
         640,
         320,
         settingsOf(512, 512, Fit::pad),
         {},
         270,
         {512, 512},
         {128, 0, 256, 512},
         {.quarterTurns = 3}},
        {"pad, QL pixels",
         300,
         300,
         settingsOf(512, 256, Fit::pad),
         {2, 3},
         0,
         {512, 256},
         {64, 0, 384, 256},
         {}},
        {"pad enlarges", 16, 8, settingsOf(512, 512, Fit::pad), {}, 0, {512, 512}, {0, 128, 512, 256}, {}},
        {"fill, wide",
         640,
         320,
         settingsOf(256, 256, Fit::fill),
         {},
         0,
         {256, 256},
         {0, 0, 256, 256},
         {0.25, 0, 0.75, 1}},
        {"fill, tall",
         320,
         640,
         settingsOf(256, 256, Fit::fill),
         {},
         0,
         {256, 256},
         {0, 0, 256, 256},
         {0, 0.25, 1, 0.75}},
        {"fill, turned",
         640,
         320,
         settingsOf(256, 512, Fit::fill),
         {},
         90,
         {256, 512},
         {0, 0, 256, 512},
         {.quarterTurns = 1}},
        {"fill, QL pixels",
         400,
         400,
         settingsOf(512, 256, Fit::fill),
         {2, 3},
         0,
         {512, 256},
         {0, 0, 512, 256},
         {0, 0.125, 1, 0.875}},
    };
    for (auto c : cases) {
        c.settings.shape.pixelShape = c.pixels;
        c.settings.shape.rotation = c.rotation;
        const FrameGeometry geometry = frameGeometry(c.sourceWidth, c.sourceHeight, c.settings);
        EXPECT_EQ(geometry.size, c.size) << c.name;
        EXPECT_EQ(geometry.area, c.area) << c.name;
        EXPECT_EQ(geometry.framing, c.framing) << c.name;
    }
}

TEST(FrameGeometry, CropsInTheFilmsPixels) {
    Settings settings = settingsOf(512, 512);
    settings.shape.crop = Shape::Crop::rectangle;
    settings.shape.part = {160, 0, 320, 320};
    FrameGeometry geometry = frameGeometry(640, 320, settings);
    EXPECT_EQ(geometry.size, (FrameSize{320, 320}));
    EXPECT_EQ(geometry.framing, (Framing{0.25, 0, 0.75, 1}));
    settings = settingsOf(64, 128, Fit::fill);
    settings.shape.crop = Shape::Crop::rectangle;
    settings.shape.part = {0, 0, 320, 320};
    EXPECT_EQ(frameGeometry(640, 640, settings).framing, (Framing{0.125, 0, 0.375, 0.5}));
    for (const PixelRectangle part :
         {PixelRectangle{1, 0, 640, 640}, {0, 1, 640, 640}, {0, 0, 641, 1}, {640, 0, 1, 1}}) {
        settings.shape.part = part;
        EXPECT_THROW(frameGeometry(640, 640, settings), SettingsError);
    }
}

TEST(BlackBars, FindsTheSmallestRectangleWithThePicture) {
    using Bitmap = std::vector<std::uint8_t>;
    const int width = 200, height = 100;
    const auto painted = [&](PixelRectangle part, int level) {
        Bitmap rgba(std::size_t{4} * width * height, 0);
        for (int y = part.y; y < part.y + part.height; ++y)
            for (int x = part.x; x < part.x + part.width; ++x)
                rgba[static_cast<std::size_t>(4 * (y * width + x) + (x + y) % 3)] =
                    static_cast<std::uint8_t>(level);
        return rgba;
    };
    const auto found = [&](const std::vector<Bitmap>& pictures) {
        BlackBars bars(width, height);
        for (const Bitmap& picture : pictures)
            bars.add(picture);
        return bars.picture();
    };
    using Result = std::optional<PixelRectangle>;
    EXPECT_EQ(found({painted({0, 12, 200, 76}, 200)}), (Result{{0, 12, 200, 76}}));
    EXPECT_EQ(found({painted({21, 11, 150, 78}, 23)}), (Result{{20, 10, 152, 80}}));  // outwards to even
    EXPECT_EQ(found({painted({0, 12, 200, 76}, 22)}), Result());                      // all black
    EXPECT_EQ(found({painted({1, 1, 198, 98}, 200)}), Result());                      // thin edges
    EXPECT_EQ(found({painted({0, 0, 60, 60}, 200)}), Result());                       // too little left
    EXPECT_EQ(found({painted({0, 40, 200, 20}, 90), painted({50, 0, 100, 100}, 90)}), Result());  // united
    EXPECT_EQ(found({painted({60, 30, 80, 40}, 90), Bitmap(painted({}, 0)), painted({20, 20, 160, 60}, 90)}),
              (Result{{20, 20, 160, 60}}));
}

TEST(FrameMaker, PadsAndAdjustsThePictureOnly) {
    FrameRecipe recipe;
    recipe.geometry = {{16, 8}, {4, 2, 8, 4}, {}};
    recipe.padColour = {255, 0, 8};
    recipe.controls.brightness = 0.5;
    recipe.controls.contrast = 0;  // all becomes 1
    FrameMaker maker(std::make_shared<const FrameTools>(recipe));
    const fake::FakePicture picture(3);
    const FrameImage image = FrameDecoder().decodeFrame(maker.record(picture), 16, 8).value();
    const auto original = maker.original(picture);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 16; ++x) {
            const std::uint8_t* pixel = image.pixels.data() + 4 * (y * 16 + x);
            const bool isInside = x >= 4 && x < 12 && y >= 2 && y < 6;
            const std::vector<int> expected = isInside ? std::vector{255, 255, 255} : std::vector{8, 0, 255};
            EXPECT_EQ(std::vector<int>(pixel, pixel + 3), expected) << x << ", " << y;
        }
    }
    // The original is padded, but not adjusted.
    EXPECT_EQ(original[2], 8);
    EXPECT_EQ(std::ranges::count(original, 255), 16 * 8 + (16 * 8 - 32));
}

TEST(TimeRange, SelectsFramesAndSound) {
    fake::FakeFilm film;
    film.videoTracks.front().nominalFrameRate = 25;
    film.duration = 20;
    const fake::FakeAsset asset(film);
    const auto planned = [&](const char* from, const char* to, int fps = 10) {
        Settings settings;
        settings.fps = fps;
        if (from != nullptr) settings.time.from = parseTimePoint(from);
        if (to != nullptr) settings.time.to = parseTimePoint(to);
        return planConversion(asset, settings);
    };
    ConversionPlan plan = planned("4.04", "7.26");  // to the nearest frames: 40 and 73
    EXPECT_EQ(plan.firstFrame, 40);
    EXPECT_DOUBLE_EQ(plan.duration, 3.3);
    EXPECT_EQ(plan.totalFrames, 40);  // four whole seconds
    EXPECT_EQ(firstSample(plan), 80000);
    GrabSchedule schedule = grabSchedule(plan);
    EXPECT_EQ(schedule.at(0).value, 2400);
    EXPECT_EQ(schedule.at(32).value, 4320);
    EXPECT_EQ(schedule.at(33).value, 4379);  // the rest repeats the end of the part
    EXPECT_EQ(schedule.at(39).value, 4379);

    plan = planned("25%", nullptr);
    EXPECT_EQ(plan.firstFrame, 50);
    EXPECT_EQ(plan.seconds, 15);
    EXPECT_EQ(grabSchedule(plan).at(149).value, grabSchedule(planned(nullptr, nullptr)).at(199).value);
    EXPECT_EQ(planned(nullptr, "50%").totalFrames, 100);
    EXPECT_EQ(planned("1", "99").duration, 19);                 // a later end is that of the film
    EXPECT_EQ(firstSample(planned("1.3", nullptr, 7)), 25714);  // frame 9: 9 / 7 s

    Settings settings;
    settings.time.to = parseTimePoint("7.26");
    EXPECT_EQ(sampleCount(settings, planned("4.04", "7.26")), 66000);
    EXPECT_EQ(sampleCount({}, planned("4.04", nullptr)), 320000);
    for (const auto& [from, to] : {std::pair{"20", (const char*)nullptr},
                                   {"100%", nullptr},
                                   {"5", "2"},
                                   {"5", "5"},
                                   {"5", "5.01"},
                                   {"50%", "9"},
                                   {nullptr, "0"}})
        EXPECT_THROW(planned(from, to), SettingsError);
}

}  // namespace
}  // namespace zeb
