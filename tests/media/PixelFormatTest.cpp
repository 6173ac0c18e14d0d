#include <gmock/gmock.h>

#include <cstring>
#include <sstream>

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

/// Four quarters: red, green, blue (half transparent if the format has alpha), light grey.
Colour quarter(int index, bool hasAlpha) {
    const Colour colours[] = {
        {220, 30, 20, 255}, {20, 200, 60, 255}, {40, 60, 230, hasAlpha ? 128 : 255}, {210, 210, 210, 255}};
    return colours[index];
}

/// The mean colour of 8 x 8 pixels, because coarse formats are dithered.
Colour average(const test::Drawing& drawing, int left, int top) {
    Colour sum = {32, 32, 32, 32};
    for (int i = 0; i < 64; ++i) {
        for (std::size_t c = 0; c < 4; ++c)
            sum[c] += drawing.at(left + i % 8, top + i / 8)[c];
    }
    return {sum[0] / 64, sum[1] / 64, sum[2] / 64, sum[3] / 64};
}

TEST(PixelFormats, KeepTheirColoursWhenDrawn) {
    const struct {
        int tolerance;
        bool isFullRange;
        const char* formats;
    } cases[] = {
        {1, false, "rgb24 bgr24 0rgb bgr0 gbrp"},
        {2, false, "gray gray10le gray16le gray16be ya8 ya16be argb rgba bgra abgr rgb48le rgb48be rgba64le"},
        {2, false, "bgra64be gbrap gbrp10le gbrp12be gbrap16le gbrpf32le"},
        {4, true, "yuv420p yuvj420p yuvj422p yuv444p10le"},
        {4, false, "yuv410p yuv411p yuv420p yuv422p yuv440p yuv444p yuv420p9le yuv420p10le yuv420p10be"},
        {4, false, "yuv422p12le yuv444p14be yuv444p16le yuv422p16be yuva420p yuva444p10le yuva422p16be"},
        {4, false, "nv12 nv21 nv24 p010le p016be yuyv422 uyvy422 ayuv64le x2rgb10le"},
        {9, false, "rgb565le rgb555be rgb8 rgb4_byte"},
    };
    for (const auto& [tolerance, isFullRange, formats] : cases) {
        std::istringstream stream(formats);
        for (std::string name; stream >> name;) {
            const AVPixelFormat format = av_get_pix_fmt(name.c_str());
            const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
            const bool hasAlpha = (description.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
            for (const auto& [width, height] : {std::pair{64, 32}, {63, 31}}) {
                SCOPED_TRACE(name + (isFullRange ? " full range " : " ") + std::to_string(width));
                const auto painter = [&](int x, int y) {
                    return quarter((x >= 32 ? 1 : 0) + (y >= 16 ? 2 : 0), hasAlpha);
                };
                const auto shown = picture(paintedFrame(format, width, height, painter, isFullRange));
                const auto drawing = test::draw(*shown, width, height);
                for (int i = 0; i < 4; ++i) {
                    Colour expected = quarter(i, hasAlpha);
                    if (description.nb_components <= 2) {
                        const double grey = 0.299 * expected[0] + 0.587 * expected[1] + 0.114 * expected[2];
                        expected[0] = expected[1] = expected[2] = static_cast<int>(grey + 0.5);
                    }
                    for (std::size_t c = 0; c < 3; ++c)
                        expected[c] = (expected[c] * expected[3] + 127) / 255;
                    EXPECT_THAT(average(drawing, 12 + i % 2 * 32, 4 + i / 2 * 16),
                                IsNear(expected, tolerance));
                }
            }
        }
    }
}

TEST(PixelFormats, AreDrawnAtAnySize) {
    for (const char* name : {"yuv420p", "yuv410p", "yuv422p10le", "nv12", "gray", "yuva420p", "gbrp"}) {
        for (const auto& [width, height] : {std::pair{1, 1}, {2, 1}, {1, 2}, {7, 5}, {5, 401}, {401, 3}}) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(width) + "x" + std::to_string(height));
            const auto shown = picture(
                paintedFrame(av_get_pix_fmt(name), width, height, [](int, int) { return test::grey(200); }));
            EXPECT_EQ(shown->width(), width);
            EXPECT_EQ(shown->height(), height);
            for (const auto& [drawnWidth, drawnHeight] : {std::pair{64, 64}, {1, 1}, {9, 200}}) {
                const auto drawing = test::draw(*shown, drawnWidth, drawnHeight);
                for (int i = 0; i < drawnWidth * drawnHeight; ++i)
                    ASSERT_THAT(drawing.at(i % drawnWidth, i / drawnWidth), IsNear(test::grey(200), 4)) << i;
            }
        }
    }
}

TEST(PixelFormats, PaletteAndBitmapsAreDrawnExactly) {
    ffmpeg::Frame frame = test::emptyFrame(AV_PIX_FMT_PAL8, 16, 16);
    const std::uint32_t palette[256] = {0xFFE01020, 0x80FFFFFF, 0x00123456, 0xFF00C040};
    std::memcpy(frame->data[1], palette, sizeof palette);
    for (int y = 0; y < 16; ++y)
        std::memset(frame->data[0] + y * frame->linesize[0], y / 4, 16);
    const auto drawing = test::draw(*picture(std::move(frame)), 16, 16);
    const Colour expected[] = {
        {0xE0, 0x10, 0x20, 255}, {128, 128, 128, 128}, {0, 0, 0, 0}, {0, 0xC0, 0x40, 255}};
    for (int i = 0; i < 4; ++i)
        EXPECT_THAT(drawing.at(8, i * 4 + 1), IsNear(expected[i], 1)) << i;
    for (const AVPixelFormat format : {AV_PIX_FMT_MONOBLACK, AV_PIX_FMT_MONOWHITE}) {
        ffmpeg::Frame bits = test::emptyFrame(format, 16, 16);
        for (int y = 0; y < 16; ++y)
            std::memset(bits->data[0] + y * bits->linesize[0], y < 8 ? 0xFF : 0, 2);
        const auto drawn = test::draw(*picture(std::move(bits)), 16, 16);
        const int set = format == AV_PIX_FMT_MONOBLACK ? 255 : 0;
        EXPECT_EQ(drawn.at(8, 3), test::grey(set));
        EXPECT_EQ(drawn.at(8, 12), test::grey(255 - set));
    }
}

TEST(PixelFormats, TransparentColoursDoNotBleedAtEdges) {
    // Transparent pixels are green, opaque ones red. No green may appear at the edge, not even after
    // shrinking.
    const auto shown = picture(paintedFrame(AV_PIX_FMT_RGBA, 64, 64, [](int x, int) {
        return x < 33 ? Colour{255, 0, 0, 255} : Colour{0, 255, 0, 0};
    }));
    for (const DrawingColourSpace space : {DrawingColourSpace::deviceRGB, DrawingColourSpace::sRGB}) {
        const auto drawing = test::draw(*shown, 24, 24, space);
        for (int x = 0; x < 24; ++x) {
            const Colour colour = drawing.at(x, 12);
            EXPECT_LE(colour[1], 3) << x;
            EXPECT_LE(colour[0], colour[3]) << "colours are premultiplied";
        }
    }
}

}  // namespace
}  // namespace zeb
