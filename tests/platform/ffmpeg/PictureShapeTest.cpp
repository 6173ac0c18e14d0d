#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "Clips.h"
#include "Frames.h"

namespace zeb {
namespace {

using test::clip;
using test::Colour;

double psnr(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b,
            std::size_t bytesPerPixelOfB) {
    double sum = 0;
    const std::size_t count = a.size() / 4;
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t c = 0; c < 3; ++c)
            sum += std::pow(a[i * 4 + c] - b[i * bytesPerPixelOfB + c], 2);
    }
    return 10 * std::log10(255 * 255 * 3 * static_cast<double>(count) / std::max(sum, 1e-9));
}

TEST(PictureShape, AllEightOrientations) {
    // A picture of six colours; the expected one is made by moving pixels.
    const auto colourAt = [](int x, int y) { return Colour{40 + x * 80, 60 + y * 120, 200 - x * 60, 255}; };
    constexpr int width = 3, height = 2, block = 16;
    for (int turns = 0; turns < 4; ++turns) {
        for (const bool mirrored : {false, true}) {
            auto frame = test::paintedFrame(AV_PIX_FMT_GBRP, width * block, height * block,
                                            [&](int x, int y) { return colourAt(x / block, y / block); });
            const auto shown = test::picture(std::move(frame), {mirrored, turns});
            const bool exchanged = turns % 2 != 0;
            const int shownWidth = exchanged ? height : width, shownHeight = exchanged ? width : height;
            ASSERT_EQ(shown->width(), shownWidth * block);
            ASSERT_EQ(shown->height(), shownHeight * block);
            for (const auto space : {DrawingColourSpace::deviceRGB, DrawingColourSpace::sRGB}) {
                const auto pixels = test::draw(*shown, shownWidth * block, shownHeight * block, space);
                for (int y = 0; y < height; ++y) {
                    for (int x = 0; x < width; ++x) {
                        int px = mirrored ? width - 1 - x : x, py = y, w = width, h = height;
                        for (int i = 0; i < turns; ++i) {  // clockwise: what was at the left comes to the top
                            const int old = px;
                            px = h - 1 - py;
                            py = old;
                            std::swap(w, h);
                        }
                        const std::size_t at = static_cast<std::size_t>(
                            ((py * block + block / 2) * shownWidth * block + px * block + block / 2) * 4);
                        for (std::size_t c = 0; c < 3; ++c) {
                            EXPECT_NEAR(pixels[at + c], colourAt(x, y)[c], 1) << turns << mirrored << x << y;
                        }
                    }
                }
            }
        }
    }
}

TEST(PictureShape, DisplayMatricesAndAspects) {
    struct Case {
        const char* name;
        const char* filter;
        const char* option;
        double width, height;  // displayed
        int redX, redY;        // where the top left quarter of the coded picture is shown
    };
    const std::string input = "-f lavfi -i color=blue:s=96x64:r=10:d=1 -vf drawbox=c=red:w=48:h=32:t=fill";
    for (const Case& c : {
             Case{"upright.mp4", "", "", 96, 64, 0, 0},
             Case{"turned90.mp4", "", " -metadata:s:v rotate=270", 64, 96, 1, 0},
             Case{"turned180.mp4", "", " -metadata:s:v rotate=180", 96, 64, 1, 1},
             Case{"turned270.mov", "", " -metadata:s:v rotate=90", 64, 96, 0, 1},
             Case{"wide.mp4", ",setsar=4/3", "", 128, 64, 0, 0},
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
        const auto picture = asset->makeImageGenerator(1, {})->copyImage(test::at(0.5));
        EXPECT_EQ(picture->width(), std::lround(c.width));
        EXPECT_EQ(picture->height(), std::lround(c.height));
        const auto pixels = test::draw(*picture, 32, 32);
        for (int quarter = 0; quarter < 4; ++quarter) {
            const int x = quarter % 2, y = quarter / 2;
            const bool isRed = pixels[static_cast<std::size_t>(((8 + y * 16) * 32 + 8 + x * 16) * 4)] > 150;
            EXPECT_EQ(isRed, x == c.redX && y == c.redY) << x << y;
        }
    }
}

/// Combs: how much lines differ from both neighbours while the neighbours agree.
double combing(const std::vector<std::uint8_t>& pixels, int width, int height) {
    double sum = 0;
    for (int y = 1; y + 1 < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto level = [&](int row) {
                return static_cast<int>(pixels[static_cast<std::size_t>((row * width + x) * 4 + 1)]);
            };
            const int above = level(y - 1) - level(y), below = level(y + 1) - level(y);
            if (above * below > 0) sum += std::min(std::abs(above), std::abs(below));
        }
    }
    return sum / width / height;
}

TEST(PictureShape, InterlacedPicturesHaveNoCombs) {
    // An edge that moves 6 pixels from one field to the next.
    const std::string moving =
        "-f lavfi -i color=black:s=160x96:r=50:d=2,drawbox=c=white:x=40:y=0:w=32:h=96:t=fill,scroll=h=0.0375";
    for (const char* name : {"fields.mpg", "fields.mp4", "fields.mkv", "fields.ts"}) {
        SCOPED_TRACE(name);
        const bool isMPEG2 = std::string(name) == "fields.mpg";
        const std::string coding = isMPEG2 ? " -c:v mpeg2video -flags +ildct+ilme -b:v 4M"
                                           : " -c:v libx264 -flags +ildct+ilme -x264-params tff=1";
        const auto asset = test::open(clip(
            name, moving + " -vf interlace=scan=tff:lowpass=off,setfield=tff -pix_fmt yuv420p" + coding));
        EXPECT_NEAR(asset->videoTracks().at(0).nominalFrameRate, 25, 0.01);
        const auto straight = asset->makeImageGenerator(2, {}), planned = asset->makeImageGenerator(2, {});
        planned->expect({10, 5, 1.9});
        for (int i = 1; i < 8; ++i) {
            const auto pixels = test::draw(*straight->copyImage(test::at(i * 0.2)), 160, 96);
            EXPECT_LT(combing(pixels, 160, 96), 1.0) << i;
            EXPECT_EQ(test::draw(*planned->copyImage(test::at(i * 0.2)), 160, 96), pixels) << i;
        }
    }
}

TEST(PictureShape, ProgressivePicturesAreLeftAlone) {
    // Lines that alternate in a still, progressive picture are detail, not combs: also in a film that is
    // interlaced elsewhere.
    const auto generator =
        test::open(clip("stripes.mkv",
                        "-f lavfi -i nullsrc=s=160x96:r=25:d=1,geq=lum=60+120*mod(Y\\,2):cb=128:cr=128 "
                        "-c:v ffv1 -pix_fmt yuv420p"))
            ->makeImageGenerator(1, {});
    EXPECT_GT(combing(test::draw(*generator->copyImage(test::at(0.5)), 160, 96), 160, 96), 50);
}

TEST(PictureShape, RealInterlacedClipHasNoCombs) {
    ZEB_REAL_CLIP(path, "xdcam-ex-1080i60.mov");
    const auto generator = test::open(path)->makeImageGenerator(2, {});
    for (const double time : {0.2, 0.5, 0.8}) {
        const auto pixels = test::draw(*generator->copyImage(test::at(time)), 1920, 1080);
        EXPECT_LT(combing(pixels, 1920, 1080), 1.5) << time;
    }
}

TEST(PictureShape, RealClipsStandAsTheyShould) {
    ZEB_REAL_CLIP(phone, "ftyp3gp5.mp4");
    const auto upright = test::open(phone);
    const MediaSize size =
        upright->videoTracks()[0].preferredTransform.apply(upright->videoTracks()[0].naturalSize);
    EXPECT_NEAR(std::abs(size.width), 720, 0.01);
    EXPECT_NEAR(std::abs(size.height), 1280, 0.01);
    // The program turns pictures by the matrix on its own.
    const std::string still =
        clip("phone.rgb", "-i " + phone +
                              " -frames:v 1 -s 180x320 -sws_flags "
                              "lanczos+accurate_rnd+full_chroma_int -f rawvideo -pix_fmt rgb24");
    const std::string expected = test::contents(still);
    EXPECT_GT(psnr(test::draw(*upright->makeImageGenerator(1, {})->copyImage(test::at(0)), 180, 320),
                   {expected.begin(), expected.end()}, 3),
              30);
    ZEB_REAL_CLIP(narrow, "SAR-2by3.mp4");
    EXPECT_NEAR(test::open(narrow)->videoTracks()[0].naturalSize.width, 640 * 2 / 3.0, 0.01);
}

TEST(Scaling, MatchesAnIndependentLanczos) {
    for (const auto& [clipName, time, width, height, matrix] :
         {std::tuple{"bbb_2500ms.ts", 1.0, 512, 288, "bt709"},
          {"big_buck_bunny_0_30.webm", 7.0, 256, 144, "bt601"},
          {"chaplin.mp4", 3.0, 512, 288, "bt601"},
          {"roadtrip-vp92-10bit.webm", 1.0, 256, 144, "bt601"}}) {
        SCOPED_TRACE(clipName);
        ZEB_REAL_CLIP(path, clipName);
        const auto picture = test::open(path)->makeImageGenerator(2, {})->copyImage(test::at(time));
        const auto drawn = test::draw(*picture, width, height);
        // The same moment by number: the frame whose picture is nearest.
        const std::string size = std::to_string(width) + ":" + std::to_string(height);
        const std::string frames = test::contents(
            clip(std::string(clipName) + ".rgb",
                 "-i " + path + " -vf trim=start=" +
                     std::to_string(time - 0.08 + (std::string(clipName) == "bbb_2500ms.ts" ? 1.51 : 0)) +
                     ",scale=" + size +
                     ":flags=lanczos+accurate_rnd+full_chroma_int+full_chroma_inp:in_color_matrix=" + matrix +
                     " -copyts -frames:v 5 -f rawvideo -pix_fmt rgb24"));
        const std::size_t frameSize = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3;
        double best = 0;
        for (std::size_t i = 0; (i + 1) * frameSize <= frames.size(); ++i) {
            best = std::max(best, psnr(drawn,
                                       {frames.begin() + static_cast<std::ptrdiff_t>(i * frameSize),
                                        frames.begin() + static_cast<std::ptrdiff_t>((i + 1) * frameSize)},
                                       3));
        }
        EXPECT_GE(best, 38);
    }
}

TEST(Scaling, ShrinkingLeavesNoPatterns) {
    // One-pixel stripes and a fan of rings of 4K, shrunk fifteenfold: even grey.
    const auto stripes = test::picture(test::paintedFrame(AV_PIX_FMT_YUV420P, 3840, 2160, [](int x, int y) {
        const int level = y < 1080 ? (x % 2) * 255 : (y % 2) * 255;
        return Colour{level, level, level, 255};
    }));
    const auto rings = test::picture(test::paintedFrame(AV_PIX_FMT_YUV420P, 3840, 2160, [](int x, int y) {
        const int level = static_cast<int>(127.5 + 127 * std::cos((x * x + y * y) * 3.14159 / 4400));
        return Colour{level, level, level, 255};
    }));
    const auto spread = [](const Picture& picture, int fromColumn) {
        const auto pixels = test::draw(picture, 455, 256);
        double sum = 0, squares = 0, count = 0;
        for (int y = 8; y < 248; ++y) {
            if (y > 120 && y < 136) continue;  // where the stripes change direction
            for (int x = fromColumn; x < 450; ++x) {
                const double level = pixels[static_cast<std::size_t>((y * 455 + x) * 4 + 1)];
                sum += level;
                squares += level * level;
                count += 1;
            }
        }
        return std::sqrt(squares / count - sum / count * sum / count);
    };
    EXPECT_LT(spread(*stripes, 5), 1.5);
    EXPECT_LT(spread(*rings, 160), 2.5);  // beyond what the small picture can show
}

TEST(Scaling, EdgesRingNoMoreThanLanczos) {
    const auto edge = test::picture(test::paintedFrame(AV_PIX_FMT_YUV444P, 640, 64, [](int x, int) {
        const int level = x < 320 ? 60 : 180;
        return Colour{level, level, level, 255};
    }));
    for (const int width : {160, 427, 1280}) {
        const auto pixels = test::draw(*edge, width, 64);
        const double scale = width / 640.0, reach = 3 * std::max(1.0, scale) + 1;
        for (int x = 0; x < width; ++x) {
            const double level = pixels[static_cast<std::size_t>((32 * width + x) * 4 + 1)];
            const double distance = x + 0.5 - width / 2.0;
            if (std::abs(distance) > reach) {
                EXPECT_NEAR(level, distance < 0 ? 60 : 180, 1) << width << " " << x;
            } else {  // Lanczos overshoots by up to about 11 % of the step
                EXPECT_GE(level, 60 - 0.115 * 120) << width << " " << x;
                EXPECT_LE(level, 180 + 0.115 * 120) << width << " " << x;
            }
        }
    }
}

}  // namespace
}  // namespace zeb
