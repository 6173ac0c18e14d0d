#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "Frames.h"
#include "platform/ffmpeg/ColourDescription.h"

namespace zeb {
namespace {

using test::codedFrame;
using test::Colour;
using test::colourOf;
using test::picture;

struct Marking {
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
};

ffmpeg::Frame marked(ffmpeg::Frame frame, const Marking& marking) {
    frame->colorspace = marking.matrix;
    frame->color_trc = marking.transfer;
    frame->color_primaries = marking.primaries;
    if (marking.range != AVCOL_RANGE_UNSPECIFIED) frame->color_range = marking.range;
    return frame;
}

/// R'G'B' (0 ... 1) as 10-bit limited-range Y'CbCr by a matrix with these weights of red and blue.
std::array<int, 3> coded(std::array<double, 3> rgb, double red, double blue) {
    const double y = red * rgb[0] + (1 - red - blue) * rgb[1] + blue * rgb[2];
    const auto level = [](double v) { return static_cast<int>(std::lround(v)); };
    return {level(64 + 876 * y), level(512 + 896 * (rgb[2] - y) / (2 - 2 * blue)),
            level(512 + 896 * (rgb[0] - y) / (2 - 2 * red))};
}

Colour shown(std::array<double, 3> rgb, double red, double blue, const Marking& marking,
             DrawingColourSpace space = DrawingColourSpace::sRGB, int width = 64, int height = 64) {
    auto frame = codedFrame(AV_PIX_FMT_YUV444P10LE, width, height, coded(rgb, red, blue));
    return colourOf(*picture(marked(std::move(frame), marking)), space);
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

TEST(Colour, TheMatrixIsGuessedBySize) {
    // A strong green, coded by one matrix or the other: right only with the fitting one.
    const std::array<double, 3> green = {0.1, 0.8, 0.2};
    struct Case {
        int width, height;
        bool isHighDefinition;
    };
    for (const Case& c : {Case{720, 576, false},
                          {720, 480, false},
                          {640, 360, false},
                          {1280, 720, true},
                          {1920, 1080, true},
                          {960, 720, true},
                          {608, 1080, true}}) {
        const double red = c.isHighDefinition ? 0.2126 : 0.299, blue = c.isHighDefinition ? 0.0722 : 0.114;
        const Colour colour = shown(green, red, blue, {}, DrawingColourSpace::deviceRGB, c.width, c.height);
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(colour[i], green[i] * 255, 1.5) << c.width << " " << i;
    }
}

TEST(Colour, MarkedMatricesAndRangesAreKept) {
    const std::array<double, 3> colour = {0.7, 0.2, 0.5};
    struct Case {
        AVColorSpace matrix;
        double red, blue;
    };
    for (const Case& c : {Case{AVCOL_SPC_BT709, 0.2126, 0.0722},
                          {AVCOL_SPC_SMPTE170M, 0.299, 0.114},
                          {AVCOL_SPC_BT470BG, 0.299, 0.114},
                          {AVCOL_SPC_SMPTE240M, 0.212, 0.087},
                          {AVCOL_SPC_FCC, 0.30, 0.11},
                          {AVCOL_SPC_BT2020_NCL, 0.2627, 0.0593}}) {
        const Colour drawn = shown(colour, c.red, c.blue, {c.matrix}, DrawingColourSpace::deviceRGB);
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(drawn[i], colour[i] * 255, 1.5) << c.matrix << " " << i;
    }
    for (const auto& [range, black, white] :
         {std::tuple{AVCOL_RANGE_MPEG, 16, 235}, {AVCOL_RANGE_JPEG, 0, 255}}) {
        Marking marking;
        marking.range = range;
        for (const auto& [value, expected] :
             {std::pair{black, 0}, {white, 255}, {(black + white) / 2, 127}}) {
            for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_GRAY8}) {
                const Colour drawn =
                    colourOf(*picture(marked(codedFrame(format, 64, 64, {value, 128, 128}), marking)));
                EXPECT_NEAR(drawn[1], expected, 1.5) << format << " " << range << " " << value;
            }
        }
    }
}

TEST(Colour, StandardRangeEndsInSRGB) {
    for (int level = 0; level <= 20; ++level) {
        const double v = level / 20.0;
        const std::array<double, 3> grey = {v, v, v};
        const double expected = encodeSRGB(decodeVideo(v));
        // Greys look the same whatever the primaries; the other path leaves them alone.
        for (const Marking& marking :
             {Marking{AVCOL_SPC_BT709, AVCOL_TRC_BT709, AVCOL_PRI_BT709}, Marking{AVCOL_SPC_BT709},
              Marking{AVCOL_SPC_BT709, AVCOL_TRC_SMPTE170M, AVCOL_PRI_BT470BG},
              Marking{AVCOL_SPC_BT709, AVCOL_TRC_BT709, AVCOL_PRI_SMPTE170M},
              Marking{AVCOL_SPC_BT709, AVCOL_TRC_BT2020_10, AVCOL_PRI_BT2020}}) {
            const Colour drawn = shown(grey, 0.2126, 0.0722, marking);
            for (std::size_t i = 0; i < 3; ++i)
                EXPECT_NEAR(drawn[i], expected, 1.1) << v << " " << marking.primaries;
            EXPECT_NEAR(shown(grey, 0.2126, 0.0722, marking, DrawingColourSpace::deviceRGB)[1], v * 255, 1.1);
        }
        EXPECT_NEAR(shown(grey, 0.2126, 0.0722, {AVCOL_SPC_BT709, AVCOL_TRC_IEC61966_2_1})[0], v * 255, 1.1);
        EXPECT_NEAR(shown(grey, 0.2126, 0.0722, {AVCOL_SPC_BT709, AVCOL_TRC_GAMMA28})[0],
                    encodeSRGB(std::pow(v, 2.8)), 1.1);
    }
}

TEST(Colour, PrimariesAreConverted) {
    // Light in the stream's primaries to light in sRGB's, rows as published (BT.2087 for BT.2020; the others
    // computed once with another program from the chromaticities).
    struct Case {
        AVColorPrimaries primaries;
        double matrix[3][3];
    };
    for (const Case& c : {
             Case{AVCOL_PRI_BT2020,
                  {{1.6605, -0.5876, -0.0728}, {-0.1246, 1.1329, -0.0083}, {-0.0182, -0.1006, 1.1187}}},
             Case{AVCOL_PRI_BT470BG, {{1.0440, -0.0440, 0}, {0, 1, 0}, {0, 0.0118, 0.9882}}},
             Case{AVCOL_PRI_SMPTE170M,
                  {{0.9395, 0.0502, 0.0103}, {0.0178, 0.9658, 0.0164}, {-0.0016, -0.0044, 1.0060}}},
             Case{AVCOL_PRI_SMPTE432,
                  {{1.2249, -0.2247, 0}, {-0.0420, 1.0419, 0}, {-0.0197, -0.0786, 1.0979}}},
         }) {
        for (const std::array<double, 3> rgb : {std::array{0.8, 0.5, 0.4},
                                                {0.3, 0.7, 0.5},
                                                {0.4, 0.3, 0.9},
                                                {1.0, 0.0, 0.0},
                                                {0.0, 1.0, 0.0}}) {
            const Colour drawn = shown(rgb, 0.2126, 0.0722, {AVCOL_SPC_BT709, AVCOL_TRC_BT709, c.primaries});
            for (std::size_t i = 0; i < 3; ++i) {
                double light = 0;
                for (std::size_t j = 0; j < 3; ++j)
                    light += c.matrix[i][j] * decodeVideo(rgb[j]);
                EXPECT_NEAR(drawn[i], encodeSRGB(light), 2) << c.primaries << " " << rgb[0] << " " << i;
            }
        }
    }
}

TEST(Colour, HighDynamicRangeFitsADisplay) {
    const Marking pq{AVCOL_SPC_BT2020_NCL, AVCOL_TRC_SMPTE2084, AVCOL_PRI_BT2020};
    const Marking hlg{AVCOL_SPC_BT2020_NCL, AVCOL_TRC_ARIB_STD_B67, AVCOL_PRI_BT2020};
    const auto grey = [](double v, const Marking& marking) {
        const Colour colour = shown({v, v, v}, 0.2627, 0.0593, marking);
        EXPECT_NEAR(colour[0], colour[1], 1);
        EXPECT_NEAR(colour[2], colour[1], 1);
        return colour[1];
    };
    for (const Marking& marking : {pq, hlg}) {
        SCOPED_TRACE(marking.transfer == AVCOL_TRC_SMPTE2084 ? "PQ" : "HLG");
        EXPECT_EQ(grey(0, marking), 0);
        EXPECT_EQ(grey(1, marking), 255);
        int previous = 0;
        for (int i = 0; i <= 60; ++i) {
            const int value = grey(i / 60.0, marking);
            EXPECT_GE(value, previous) << i;
            previous = value;
        }
    }
    // Diffuse white is bright but leaves room for highlights; a face (about 18 % of white) is where it
    // belongs.
    const int white = grey(encodePQ(203), pq), hlgWhite = grey(0.75, hlg);
    EXPECT_GE(white, 215);
    EXPECT_LE(white, 245);
    EXPECT_NEAR(hlgWhite, white, 2);
    EXPECT_NEAR(grey(encodePQ(0.18 * 203), pq), encodeSRGB(0.18), 3);
    EXPECT_GE(grey(encodePQ(600), pq), white + 5);
    EXPECT_EQ(grey(encodePQ(1000), pq), 255);
    // A saturated highlight keeps its hue: brighter, not another colour.
    const Colour dim = shown({encodePQ(80), encodePQ(20), encodePQ(20)}, 0.2627, 0.0593, pq);
    const Colour bright = shown({encodePQ(800), encodePQ(200), encodePQ(200)}, 0.2627, 0.0593, pq);
    EXPECT_GT(bright[0], dim[0]);
    EXPECT_GT(bright[0], bright[1] + 60);
    EXPECT_NEAR(bright[1], bright[2], 25);
    // The other path shows the signal as it is.
    EXPECT_NEAR(shown({0.5, 0.5, 0.5}, 0.2627, 0.0593, pq, DrawingColourSpace::deviceRGB)[1], 127.5, 1.5);
}

TEST(Colour, HighDynamicRangeHeedsItsMastering) {
    // However bright the mastering display was, diffuse white must not turn grey; up to 203 nits nothing is
    // mapped.
    const auto white = [](int peakNits) {
        const double v = encodePQ(203);
        auto frame = marked(codedFrame(AV_PIX_FMT_YUV444P10LE, 64, 64, coded({v, v, v}, 0.2627, 0.0593)),
                            {AVCOL_SPC_BT2020_NCL, AVCOL_TRC_SMPTE2084, AVCOL_PRI_BT2020});
        AVMasteringDisplayMetadata* display = av_mastering_display_metadata_create_side_data(frame.get());
        display->has_luminance = 1;
        display->max_luminance = {peakNits, 1};
        display->min_luminance = {0, 1};
        return colourOf(*picture(std::move(frame)), DrawingColourSpace::sRGB)[1];
    };
    EXPECT_GE(white(203), 254);
    EXPECT_GE(white(1000), 215);
    EXPECT_GE(white(4000), 200);
    EXPECT_GE(white(10000), 190);
    EXPECT_GT(white(600), white(1000));
}

}  // namespace
}  // namespace zeb
