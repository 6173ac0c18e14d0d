#include <gtest/gtest.h>

#include <cmath>

#include "Frames.h"

namespace zeb {
namespace {

using test::clip;
using test::Colour;
using test::draw;
using test::Drawing;
using test::grey;
using test::paintedFrame;
using test::picture;

TEST(PictureShape, TurnsPicturesForAllEightOrientations) {
    // A picture of six colours. The expected picture is made by moving its pixels.
    const auto colourAt = [](int x, int y) { return Colour{40 + x * 80, 60 + y * 120, 200 - x * 60, 255}; };
    const auto painter = [&](int x, int y) { return colourAt(x / 16, y / 16); };
    for (int turns = 0; turns < 4; ++turns) {
        for (const bool mirrored : {false, true}) {
            const auto shown =
                picture(paintedFrame(AV_PIX_FMT_GBRP, 3 * 16, 2 * 16, painter), {mirrored, turns});
            ASSERT_EQ(shown->width(), turns % 2 == 0 ? 48 : 32);
            ASSERT_EQ(shown->height(), turns % 2 == 0 ? 32 : 48);
            for (const auto space : {DrawingColourSpace::deviceRGB, DrawingColourSpace::sRGB}) {
                const Drawing drawing = draw(*shown, shown->width(), shown->height(), space);
                for (int i = 0; i < 6; ++i) {
                    int x = mirrored ? 2 - i % 3 : i % 3, y = i / 3, width = 3, height = 2;
                    for (int turn = 0; turn < turns; ++turn) {  // clockwise: the left side becomes the top
                        x = std::exchange(y, x);
                        x = height - 1 - x;
                        std::swap(width, height);
                    }
                    for (std::size_t c = 0; c < 3; ++c) {
                        EXPECT_NEAR(drawing.at(x * 16 + 8, y * 16 + 8)[c], colourAt(i % 3, i / 3)[c], 1)
                            << turns << mirrored << i;
                    }
                }
            }
        }
    }
}

TEST(PictureShape, DrawsPartsTurnedAndMirrored) {
    // A picture of 6 x 4 areas of different colours; the part is made by moving its pixels.
    const auto colourAt = [](int x, int y) { return Colour{20 + x * 40, 30 + y * 60, 220 - x * 30, 255}; };
    const auto painter = [&](int x, int y) { return colourAt(x / 16, y / 16); };
    for (int turns = 0; turns < 4; ++turns) {
        for (const bool mirrored : {false, true}) {
            const auto shown =
                picture(paintedFrame(AV_PIX_FMT_GBRP, 6 * 16, 4 * 16, painter), {mirrored, turns});
            const int across = shown->width() / 16, down = shown->height() / 16;
            const Drawing whole = draw(*shown, shown->width(), shown->height());
            for (int quarterTurns = 0; quarterTurns < 4; ++quarterTurns) {
                for (const bool flipped : {false, true}) {
                    // The part of 3 x 2 areas at (1, 1).
                    const Framing framing{1.0 / across, 1.0 / down,   4.0 / across,
                                          3.0 / down,   quarterTurns, flipped};
                    const bool isTurned = quarterTurns % 2 != 0;
                    Drawing part{isTurned ? 32 : 48, {}};
                    part.bytes.resize(std::size_t{4} * 48 * 32);
                    shown->draw(
                        {part.bytes, part.width, isTurned ? 48 : 32, DrawingColourSpace::deviceRGB, framing});
                    for (int i = 0; i < 6; ++i) {
                        int x = i % 3, y = i / 3, width = 3, height = 2;
                        for (int turn = 0; turn < quarterTurns; ++turn) {
                            x = std::exchange(y, x);
                            x = height - 1 - x;
                            std::swap(width, height);
                        }
                        if (flipped) x = width - 1 - x;
                        const Colour expected = whole.at((1 + i % 3) * 16 + 8, (1 + i / 3) * 16 + 8);
                        for (std::size_t c = 0; c < 3; ++c) {
                            EXPECT_NEAR(part.at(x * 16 + 8, y * 16 + 8)[c], expected[c], 1)
                                << turns << mirrored << quarterTurns << flipped << i;
                        }
                    }
                }
            }
        }
    }
}

TEST(PictureShape, AppliesDisplayMatricesAndPixelAspects) {
    struct Case {
        const char* name;
        const char* filter;
        const char* option;
        double width, height;  // displayed size
        int redX, redY;        // position of the top left quarter of the coded picture
    };
    const std::string input = "-f lavfi -i color=blue:s=96x64:r=10:d=1 -vf drawbox=c=red:w=48:h=32:t=fill";
    for (const Case& c : {
             Case{"turned180.mp4", "", " -metadata:s:v rotate=180", 96, 64, 1, 1},
             Case{"turned270.mov", "", " -metadata:s:v rotate=90", 64, 96, 0, 1},
             Case{"narrow.mkv", ",setsar=2/3", "", 64, 64, 0, 0},
             Case{"wide.ts", ",setsar=16/11", "", 96 * 16 / 11.0, 64, 0, 0},
             Case{"wide-turned.mp4", ",setsar=2/1", " -metadata:s:v rotate=270", 64, 192, 1, 0},
         }) {
        SCOPED_TRACE(c.name);
        const std::string coded = std::string("coded-") + c.name;
        clip(coded, input + c.filter + " -c:v libx264 -pix_fmt yuv420p");
        const auto asset = test::open(clip(c.name, "-i @" + coded + " -c copy" + c.option));
        const VideoTrack& track = asset->videoTracks().at(0);
        const MediaSize size = track.preferredTransform.apply(track.naturalSize);
        EXPECT_NEAR(std::abs(size.width), c.width, 0.01);
        EXPECT_NEAR(std::abs(size.height), c.height, 0.01);
        const auto shown = asset->makeImageGenerator(1, {})->copyImage(test::at(0.5));
        EXPECT_EQ(shown->width(), std::lround(c.width));
        EXPECT_EQ(shown->height(), std::lround(c.height));
        const Drawing drawing = draw(*shown, 32, 32);
        for (int x = 0; x < 2; ++x) {
            for (int y = 0; y < 2; ++y)
                EXPECT_EQ(drawing.at(8 + x * 16, 8 + y * 16)[0] > 150, x == c.redX && y == c.redY) << x << y;
        }
    }
}

/// Strength of combing: difference of a line from its two neighbours where they are alike.
double combing(const Drawing& drawing) {
    const int width = drawing.width, height = static_cast<int>(drawing.bytes.size()) / 4 / width;
    double sum = 0;
    for (int y = 1; y + 1 < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int level = drawing.at(x, y)[1];
            const int above = drawing.at(x, y - 1)[1] - level, below = drawing.at(x, y + 1)[1] - level;
            if (above * below > 0) sum += std::min(std::abs(above), std::abs(below));
        }
    }
    return sum / width / height;
}

TEST(PictureShape, RemovesCombsOfInterlacedPicturesOnly) {
    // An edge that moves 6 pixels from one field to the next.
    const std::string moving =
        "-f lavfi -i color=black:s=160x96:r=50:d=2,drawbox=c=white:x=40:y=0:w=32:h=96:t=fill,scroll=h=0.0375 "
        "-vf interlace=scan=tff:lowpass=off,setfield=tff -pix_fmt yuv420p -flags +ildct+ilme -c:v ";
    for (const auto& [name, coding] : {std::pair{"fields.mpg", "mpeg2video -b:v 4M"},
                                       {"fields.mp4", "libx264 -x264-params tff=1"},
                                       {"fields.ts", "libx264 -x264-params tff=1"}}) {
        SCOPED_TRACE(name);
        const auto asset = test::open(clip(name, moving + coding));
        EXPECT_NEAR(asset->videoTracks().at(0).nominalFrameRate, 25, 0.01);
        const auto straight = asset->makeImageGenerator(2, {}), planned = asset->makeImageGenerator(2, {});
        planned->expect({10, 5, 1.9});
        for (int i = 1; i < 8; ++i) {
            const Drawing drawing = draw(*straight->copyImage(test::at(i * 0.2)), 160, 96);
            EXPECT_LT(combing(drawing), 1.0) << i;
            EXPECT_EQ(draw(*planned->copyImage(test::at(i * 0.2)), 160, 96), drawing) << i;
        }
    }
    // Alternating lines in a progressive picture are detail and must stay.
    const std::string stripes =
        "-f lavfi -i nullsrc=s=160x96:r=25:d=1,geq=lum=60+120*mod(Y\\,2):cb=128:cr=128 "
        "-c:v ffv1 -pix_fmt yuv420p";
    EXPECT_GT(combing(draw(*test::images(clip("stripes.mkv", stripes))->copyImage(test::at(0.5)), 160, 96)),
              50);
    if (const std::string film = test::realClip("xdcam-ex-1080i60.mov"); !film.empty()) {
        const auto generator = test::images(film);
        for (const double time : {0.2, 0.8})
            EXPECT_LT(combing(draw(*generator->copyImage(test::at(time)), 1920, 1080)), 1.5) << time;
    }
}

TEST(Scaling, MatchesIndependentLanczosFilter) {
    for (const auto& [name, format, matrix] : {std::tuple{"1280x720", "yuv420p", "bt709"},
                                               {"1280x720", "yuv422p10le", "bt709"},
                                               {"720x576", "yuv444p", "bt601"}}) {
        SCOPED_TRACE(std::string(name) + " " + format);
        const std::string path = clip(std::string(name) + format + ".mkv",
                                      std::string("-f lavfi -i mandelbrot=s=") + name +
                                          ":end_pts=1 -frames:v 1 -c:v ffv1 -pix_fmt " + format);
        const std::string scaled = test::run(
            "ffmpeg -v error -i " + path +
            " -vf scale=512:288:flags=lanczos+accurate_rnd+full_chroma_int+full_chroma_inp:in_color_matrix=" +
            matrix + " -f rawvideo -pix_fmt rgba -");
        const Drawing drawn = draw(*test::images(path)->copyImage(test::at(0)), 512, 288);
        EXPECT_GE(psnr(drawn, {512, {scaled.begin(), scaled.end()}}), 38);
    }
}

TEST(Scaling, ShrinkingLeavesNoMoirePatterns) {
    // One-pixel stripes and fine rings in 4K, reduced to a fifteenth, must become even grey.
    const auto spread = [](const std::function<int(int, int)>& level, int fromColumn) {
        const auto shown = picture(
            paintedFrame(AV_PIX_FMT_YUV420P, 3840, 2160, [&](int x, int y) { return grey(level(x, y)); }));
        const Drawing drawing = draw(*shown, 455, 256);
        double sum = 0, squares = 0, count = 0;
        for (int y = 8; y < 248; ++y) {
            if (y > 120 && y < 136) continue;  // where the stripes change direction
            for (int x = fromColumn; x < 450; ++x, ++count) {
                sum += drawing.at(x, y)[1];
                squares += std::pow(drawing.at(x, y)[1], 2);
            }
        }
        return std::sqrt(squares / count - sum / count * sum / count);
    };
    EXPECT_LT(spread([](int x, int y) { return (y < 1080 ? x : y) % 2 * 255; }, 5), 1.5);
    // Detail finer than the small picture can show.
    EXPECT_LT(
        spread([](int x, int y) { return std::lround(127 + 127 * std::cos((x * x + y * y) / 1400.6)); }, 160),
        2.5);
}

}  // namespace
}  // namespace zeb
