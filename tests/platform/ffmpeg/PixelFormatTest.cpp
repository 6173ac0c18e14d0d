#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Clips.h"
#include "Frames.h"

namespace zeb {
namespace {

using test::Colour;
using test::paintedFrame;
using test::picture;

MATCHER_P2(IsNear, colour, tolerance, "") {
    for (std::size_t c = 0; c < 4; ++c) {
        if (std::abs(arg[c] - colour[c]) > tolerance) return false;
    }
    return true;
}

/// Four quarters: red, green, blue with half alpha where there is alpha, light grey.
Colour quarter(int index, bool hasAlpha) {
    const Colour colours[] = {
        {220, 30, 20, 255}, {20, 200, 60, 255}, {40, 60, 230, hasAlpha ? 128 : 255}, {210, 210, 210, 255}};
    return colours[index];
}

Colour greyOf(Colour c) {
    const int grey = static_cast<int>(0.299 * c[0] + 0.587 * c[1] + 0.114 * c[2] + 0.5);
    return {grey, grey, grey, c[3]};
}

Colour premultiplied(Colour c) {
    for (std::size_t i = 0; i < 3; ++i)
        c[i] = (c[i] * c[3] + 127) / 255;
    return c;
}

struct Case {
    const char* format;
    int tolerance;
    bool isFullRange = false;
};

constexpr Case cases[] = {
    {"gray", 2},          {"gray10le", 2},       {"gray16le", 2},       {"gray16be", 2},
    {"ya8", 2},           {"ya16be", 2},         {"yuv410p", 4},        {"yuv411p", 4},
    {"yuv420p", 4},       {"yuv422p", 4},        {"yuv440p", 4},        {"yuv444p", 4},
    {"yuv420p", 4, true}, {"yuvj420p", 4, true}, {"yuvj422p", 4, true}, {"yuv444p10le", 4, true},
    {"yuv420p9le", 4},    {"yuv420p10le", 4},    {"yuv420p10be", 4},    {"yuv422p12le", 4},
    {"yuv444p14be", 4},   {"yuv444p16le", 4},    {"yuv422p16be", 4},    {"yuva420p", 4},
    {"yuva444p10le", 4},  {"yuva422p16be", 4},   {"nv12", 4},           {"nv21", 4},
    {"nv24", 4},          {"p010le", 4},         {"p016be", 4},         {"yuyv422", 4},
    {"uyvy422", 4},       {"ayuv64le", 4},       {"rgb24", 1},          {"bgr24", 1},
    {"argb", 2},          {"rgba", 2},           {"bgra", 2},           {"abgr", 2},
    {"0rgb", 1},          {"bgr0", 1},           {"rgb48le", 2},        {"rgb48be", 2},
    {"rgba64le", 2},      {"bgra64be", 2},       {"gbrp", 1},           {"gbrap", 2},
    {"gbrp10le", 2},      {"gbrp12be", 2},       {"gbrap16le", 2},      {"gbrpf32le", 2},
    {"x2rgb10le", 3},     {"rgb565le", 9},       {"rgb555be", 9},       {"rgb8", 9},
    {"rgb4_byte", 9},
};

TEST(PixelFormats, AreDrawnInTheirColours) {
    for (const Case& c : cases) {
        const AVPixelFormat format = av_get_pix_fmt(c.format);
        if (format == AV_PIX_FMT_NONE || sws_isSupportedOutput(format) == 0) {
            ADD_FAILURE() << c.format << " cannot be made";
            continue;
        }
        const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
        const bool hasAlpha = (description.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
        const bool isGrey = description.nb_components <= 2;
        for (const auto& [width, height] : {std::pair{64, 32}, {63, 31}}) {
            SCOPED_TRACE(std::string(c.format) + (c.isFullRange ? " full range " : " ") +
                         std::to_string(width));
            const auto shown = picture(paintedFrame(
                format, width, height,
                [&](int x, int y) { return quarter((x >= 32 ? 1 : 0) + (y >= 16 ? 2 : 0), hasAlpha); },
                c.isFullRange));
            const auto pixels = test::draw(*shown, width, height);
            for (int i = 0; i < 4; ++i) {
                // The average, since coarse formats are dithered.
                Colour drawn{};
                for (int p = 0; p < 8 * 8 * 4; ++p) {
                    const int x = 12 + i % 2 * 32 + p / 4 % 8, y = 4 + i / 2 * 16 + p / 32;
                    drawn[static_cast<std::size_t>(p % 4)] +=
                        pixels[static_cast<std::size_t>((y * width + x) * 4 + p % 4)];
                }
                for (int& component : drawn)
                    component = (component + 32) / 64;
                const Colour colour = quarter(i, hasAlpha);
                EXPECT_THAT(drawn, IsNear(premultiplied(isGrey ? greyOf(colour) : colour), c.tolerance)) << i;
            }
        }
    }
}

TEST(PixelFormats, WorkAtAnySize) {
    for (const char* name :
         {"yuv420p", "yuv410p", "yuv422p10le", "nv12", "gray", "rgb24", "yuva420p", "gbrp"}) {
        for (const auto& [width, height] :
             {std::pair{1, 1}, {2, 1}, {1, 2}, {3, 3}, {7, 5}, {5, 401}, {401, 3}}) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(width) + "x" + std::to_string(height));
            const auto shown = picture(paintedFrame(av_get_pix_fmt(name), width, height, [](int, int) {
                return Colour{200, 200, 200, 255};
            }));
            EXPECT_EQ(shown->width(), width);
            EXPECT_EQ(shown->height(), height);
            for (const auto& [targetWidth, targetHeight] : {std::pair{64, 64}, {1, 1}, {9, 200}}) {
                const auto pixels = test::draw(*shown, targetWidth, targetHeight);
                const auto [least, most] =
                    std::minmax_element(pixels.begin(), pixels.end(), [](int a, int b) {
                        return a % 255 < b % 255;  // alpha aside
                    });
                EXPECT_GE(*least % 255, 0);
                EXPECT_NEAR(pixels[0], 200, 4);
                EXPECT_NEAR(pixels[pixels.size() - 2], 200, 4);
                EXPECT_EQ(pixels.back(), 255);
                EXPECT_LE(*most, 204);
            }
        }
    }
}

TEST(PixelFormats, PaletteAndBits) {
    ffmpeg::Frame frame = ffmpeg::makeFrame();
    frame->format = AV_PIX_FMT_PAL8;
    frame->width = frame->height = 16;
    ASSERT_EQ(av_frame_get_buffer(frame.get(), 64), 0);
    const std::uint32_t palette[] = {0xFFE01020, 0x80FFFFFF, 0x00123456, 0xFF00C040};
    std::memset(frame->data[1], 0, 1024);
    std::memcpy(frame->data[1], palette, sizeof palette);
    for (int y = 0; y < 16; ++y)
        std::memset(frame->data[0] + y * frame->linesize[0], y / 4, 16);
    const auto pixels = test::draw(*picture(std::move(frame)), 16, 16);
    const Colour expected[] = {
        {0xE0, 0x10, 0x20, 255}, {128, 128, 128, 128}, {0, 0, 0, 0}, {0, 0xC0, 0x40, 255}};
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t p = (i * 4 + 1) * 16 * 4 + 32;
        EXPECT_THAT((Colour{pixels[p], pixels[p + 1], pixels[p + 2], pixels[p + 3]}), IsNear(expected[i], 1))
            << i;
    }
    for (const AVPixelFormat format : {AV_PIX_FMT_MONOBLACK, AV_PIX_FMT_MONOWHITE}) {
        ffmpeg::Frame bits = ffmpeg::makeFrame();
        bits->format = format;
        bits->width = bits->height = 16;
        ASSERT_EQ(av_frame_get_buffer(bits.get(), 64), 0);
        for (int y = 0; y < 16; ++y)
            std::memset(bits->data[0] + y * bits->linesize[0], y < 8 ? 0xFF : 0, 2);
        const auto drawn = test::draw(*picture(std::move(bits)), 16, 16);
        const int set = format == AV_PIX_FMT_MONOBLACK ? 255 : 0;
        EXPECT_EQ(drawn[4 * (3 * 16 + 8)], set);
        EXPECT_EQ(drawn[4 * (12 * 16 + 8)], 255 - set);
    }
}

TEST(PixelFormats, HiddenColoursDoNotShineThrough) {
    // Green where it is transparent, red where it is not: no green at the edge, not even after shrinking.
    const auto shown = picture(paintedFrame(AV_PIX_FMT_RGBA, 64, 64, [](int x, int) {
        return x < 33 ? Colour{255, 0, 0, 255} : Colour{0, 255, 0, 0};
    }));
    for (const DrawingColourSpace space : {DrawingColourSpace::deviceRGB, DrawingColourSpace::sRGB}) {
        const auto pixels = test::draw(*shown, 24, 24, space);
        for (std::size_t i = 0; i < pixels.size(); i += 4) {
            EXPECT_LE(pixels[i + 1], 3) << i;
            EXPECT_LE(pixels[i], pixels[i + 3]) << "colours are premultiplied";
        }
    }
}

TEST(PixelFormats, RealClipWithAlpha) {
    ZEB_REAL_CLIP(path, "png.mov");
    const auto asset = test::open(path);
    EXPECT_NEAR(asset->duration(), 1, 0.001);
    const auto shown = asset->makeImageGenerator(1, {})->copyImage(test::at(0.5));
    EXPECT_EQ(shown->width(), 320);
    const auto pixels = test::draw(*shown, 160, 120);
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        ASSERT_LE(std::max({pixels[i], pixels[i + 1], pixels[i + 2]}), pixels[i + 3]);
    }
}

}  // namespace
}  // namespace zeb
