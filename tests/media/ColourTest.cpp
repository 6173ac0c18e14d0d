#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "Frames.h"

namespace zeb {
namespace {

using test::codedFrame;
using test::Colour;
using test::colourOf;
using RGB = std::array<double, 3>;  // R'G'B', 0 ... 1
using enum DrawingColourSpace;

/// Colour properties that a stream states.
struct Marking {
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
};

/// Weights of red and blue in a Y'CbCr matrix.
struct Weights {
    double red, blue;
};
constexpr Weights bt601 = {0.299, 0.114}, bt709 = {0.2126, 0.0722}, bt2020 = {0.2627, 0.0593};
constexpr Marking pq{AVCOL_SPC_BT2020_NCL, AVCOL_TRC_SMPTE2084, AVCOL_PRI_BT2020};
constexpr Marking hlg{AVCOL_SPC_BT2020_NCL, AVCOL_TRC_ARIB_STD_B67, AVCOL_PRI_BT2020};

/// A single-colour picture as 10-bit limited-range Y'CbCr.
ffmpeg::Frame coded(RGB rgb, Weights weights, const Marking& marking, int width = 64, int height = 64) {
    const auto [red, blue] = weights;
    const double y = red * rgb[0] + (1 - red - blue) * rgb[1] + blue * rgb[2];
    const auto level = [](double v) { return static_cast<int>(std::lround(v)); };
    ffmpeg::Frame frame = codedFrame(AV_PIX_FMT_YUV444P10LE, width, height,
                                     {level(64 + 876 * y), level(512 + 896 * (rgb[2] - y) / (2 - 2 * blue)),
                                      level(512 + 896 * (rgb[0] - y) / (2 - 2 * red))});
    frame->colorspace = marking.matrix;
    frame->color_trc = marking.transfer;
    frame->color_primaries = marking.primaries;
    return frame;
}

void expectNear(const Colour& colour, RGB expected, double tolerance) {
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(colour[i], expected[i], tolerance) << "component " << i;
}

double encodeSRGB(double light) {
    light = std::clamp(light, 0.0, 1.0);
    return 255 * (light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055);
}

double decodeVideo(double v) {
    return v < 0.081 ? v / 4.5 : std::pow((v + 0.099) / 1.099, 1 / 0.45);
}

double encodePQ(double nits) {
    const double p = std::pow(nits / 10000, 0.1593017578125);
    return std::pow((0.8359375 + 18.8515625 * p) / (1 + 18.6875 * p), 78.84375);
}

TEST(Colour, UsesMarkedMatrixElseGuessesBySize) {
    // Strong colours coded with one of two matrices. Only the matching matrix restores them.
    const struct {
        int width, height;
        Weights weights;
        AVColorSpace marked = AVCOL_SPC_UNSPECIFIED;
    } cases[] = {
        {720, 576, bt601},
        {640, 360, bt601},
        {1280, 720, bt709},
        {960, 720, bt709},
        {608, 1080, bt709},
        {64, 64, bt709, AVCOL_SPC_BT709},
        {1280, 720, bt601, AVCOL_SPC_SMPTE170M},
        {1280, 720, bt601, AVCOL_SPC_BT470BG},
        {64, 64, {0.212, 0.087}, AVCOL_SPC_SMPTE240M},
        {64, 64, {0.30, 0.11}, AVCOL_SPC_FCC},
        {64, 64, bt2020, AVCOL_SPC_BT2020_NCL},
    };
    for (const auto& [width, height, weights, marked] : cases) {
        for (const RGB colour : {RGB{0.1, 0.8, 0.2}, {0.7, 0.2, 0.5}}) {
            SCOPED_TRACE(testing::Message() << width << "x" << height << ", matrix " << marked);
            expectNear(colourOf(coded(colour, weights, {marked}, width, height)),
                       {colour[0] * 255, colour[1] * 255, colour[2] * 255}, 1.5);
        }
    }
}

TEST(Colour, FollowsMarkedRange) {
    for (const auto& [range, black, white] :
         {std::tuple{AVCOL_RANGE_MPEG, 16, 235}, {AVCOL_RANGE_JPEG, 0, 255}}) {
        for (const auto& [value, expected] :
             {std::pair{black, 0}, {white, 255}, {(black + white) / 2, 127}}) {
            for (const AVPixelFormat format : {AV_PIX_FMT_YUV444P, AV_PIX_FMT_GRAY8}) {
                ffmpeg::Frame frame = codedFrame(format, 64, 64, {value, 128, 128});
                frame->color_range = range;
                EXPECT_NEAR(colourOf(std::move(frame))[1], expected, 1.5) << format << " " << range;
            }
        }
    }
}

TEST(Colour, ConvertsStandardTransfersToSRGB) {
    const auto video = [](double v) { return encodeSRGB(decodeVideo(v)); };
    const auto same = [](double v) { return v * 255; };
    const struct {
        Marking marking;
        double (*expected)(double);
    } cases[] = {
        // Greys do not depend on the primaries. Drawing for the device leaves them unchanged.
        {{AVCOL_SPC_BT709, AVCOL_TRC_BT709, AVCOL_PRI_BT709}, video},
        {{AVCOL_SPC_BT709}, video},
        {{AVCOL_SPC_BT709, AVCOL_TRC_SMPTE170M, AVCOL_PRI_BT470BG}, video},
        {{AVCOL_SPC_BT709, AVCOL_TRC_BT2020_10, AVCOL_PRI_BT2020}, video},
        {{AVCOL_SPC_BT709, AVCOL_TRC_IEC61966_2_1}, same},
        {{AVCOL_SPC_BT709, AVCOL_TRC_GAMMA28}, [](double v) { return encodeSRGB(std::pow(v, 2.8)); }},
    };
    for (const auto& [marking, expected] : cases) {
        for (int level = 0; level <= 20; ++level) {
            SCOPED_TRACE(testing::Message() << marking.transfer << " " << marking.primaries << " " << level);
            const double v = level / 20.0, grey = expected(v);
            expectNear(colourOf(coded({v, v, v}, bt709, marking), sRGB), {grey, grey, grey}, 1.1);
            expectNear(colourOf(coded({v, v, v}, bt709, marking)), {v * 255, v * 255, v * 255}, 1.1);
        }
    }
}

TEST(Colour, ConvertsPrimariesToSRGB) {
    // Matrices from linear light in the stream's primaries to linear light in sRGB. BT.2020 is as published
    // in BT.2087; the others were computed from the chromaticities with another program.
    const struct {
        AVColorPrimaries primaries;
        RGB matrix[3];
    } cases[] = {
        {AVCOL_PRI_BT2020,
         {{1.6605, -0.5876, -0.0728}, {-0.1246, 1.1329, -0.0083}, {-0.0182, -0.1006, 1.1187}}},
        {AVCOL_PRI_BT470BG, {{1.0440, -0.0440, 0}, {0, 1, 0}, {0, 0.0118, 0.9882}}},
        {AVCOL_PRI_SMPTE170M,
         {{0.9395, 0.0502, 0.0103}, {0.0178, 0.9658, 0.0164}, {-0.0016, -0.0044, 1.0060}}},
        {AVCOL_PRI_SMPTE432, {{1.2249, -0.2247, 0}, {-0.0420, 1.0419, 0}, {-0.0197, -0.0786, 1.0979}}},
    };
    for (const auto& [primaries, matrix] : cases) {
        for (const RGB rgb : {RGB{0.8, 0.5, 0.4}, {0.3, 0.7, 0.5}, {0.4, 0.3, 0.9}, {1, 0, 0}, {0, 1, 0}}) {
            SCOPED_TRACE(testing::Message() << primaries << ", red " << rgb[0]);
            RGB expected{};
            for (std::size_t i = 0; i < 3; ++i) {
                const RGB& row = matrix[i];
                expected[i] = encodeSRGB(row[0] * decodeVideo(rgb[0]) + row[1] * decodeVideo(rgb[1]) +
                                         row[2] * decodeVideo(rgb[2]));
            }
            expectNear(colourOf(coded(rgb, bt709, {AVCOL_SPC_BT709, AVCOL_TRC_BT709, primaries}), sRGB),
                       expected, 2);
        }
    }
}

TEST(Colour, MapsHighDynamicRangeToDisplay) {
    const auto shown = [](RGB rgb, const Marking& marking) {
        return colourOf(coded(rgb, bt2020, marking), sRGB);
    };
    const auto grey = [&](double v, const Marking& marking) {
        const Colour colour = shown({v, v, v}, marking);
        EXPECT_NEAR(colour[0], colour[1], 1);
        EXPECT_NEAR(colour[2], colour[1], 1);
        return colour[1];
    };
    for (const Marking& marking : {pq, hlg}) {
        EXPECT_EQ(grey(0, marking), 0);
        EXPECT_EQ(grey(1, marking), 255);
        for (int i = 0; i < 60; ++i)
            EXPECT_GE(grey((i + 1) / 60.0, marking), grey(i / 60.0, marking)) << marking.transfer << " " << i;
    }
    // Diffuse white is bright but leaves room for highlights. Skin tones (about 18 % of white) keep their
    // brightness.
    const int white = grey(encodePQ(203), pq);
    EXPECT_NEAR(white, 230, 15);
    EXPECT_NEAR(grey(0.75, hlg), white, 2);
    EXPECT_NEAR(grey(encodePQ(0.18 * 203), pq), encodeSRGB(0.18), 3);
    EXPECT_GE(grey(encodePQ(600), pq), white + 5);
    EXPECT_EQ(grey(encodePQ(1000), pq), 255);
    // A saturated highlight becomes brighter without changing its hue.
    const Colour bright = shown({encodePQ(800), encodePQ(200), encodePQ(200)}, pq);
    EXPECT_GT(bright[0], shown({encodePQ(80), encodePQ(20), encodePQ(20)}, pq)[0]);
    EXPECT_GT(bright[0], bright[1] + 60);
    EXPECT_NEAR(bright[1], bright[2], 25);
    // Drawing for the device shows the signal unchanged.
    EXPECT_NEAR(colourOf(coded({0.5, 0.5, 0.5}, bt2020, pq))[1], 127.5, 1.5);
}

TEST(Colour, MappingRespectsMasteringBrightness) {
    // Diffuse white must not turn grey for any mastering display. Up to 203 nits no tone mapping takes place.
    const auto white = [](int peakNits) {
        const double v = encodePQ(203);
        ffmpeg::Frame frame = coded({v, v, v}, bt2020, pq);
        AVMasteringDisplayMetadata* display = av_mastering_display_metadata_create_side_data(frame.get());
        display->has_luminance = 1;
        display->max_luminance = {peakNits, 1};
        display->min_luminance = {0, 1};
        return colourOf(std::move(frame), sRGB)[1];
    };
    EXPECT_GE(white(203), 254);
    EXPECT_GT(white(600), white(1000));
    EXPECT_GE(white(1000), 215);
    EXPECT_GE(white(10000), 190);
}

}  // namespace
}  // namespace zeb
