#include "codec/ColourReduction.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "codec/LoadPixel.h"
#include "platform/base/ProcessorVersions.h"

namespace zeb {

namespace {

ZEB_ALWAYS_INLINE void storeLittleEndian16(std::uint8_t* bytes, std::uint32_t value) {
    auto word = static_cast<std::uint16_t>(value);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap16(word);
    std::memcpy(bytes, &word, sizeof word);
}

/// Added to the channels before the shift.
struct Rounding {
    std::uint16_t redAndBlue;
    std::uint16_t green;
};

/// (c * 31 + 127) / 255 is (c * 249 + 1014) >> 11 and (c * 63 + 127) / 255 is (c * 253 + 505) >> 10 for every
/// byte c: without a division, and small enough for lanes of 16 bits.
constexpr Rounding toNearest = {1014, 505};

/// With the same factors and these terms, the shifts give (c * 31 + t) / 255 and (c * 63 + t) / 255 for every
/// byte c, where t is 255 * (2v + 1) / 16 in exact arithmetic and v the entry's rank 0 4 2 6 1 5 3 7.
constexpr std::array<Rounding, 8> byRow = {
    {{121, 64}, {1147, 570}, {634, 317}, {1664, 835}, {375, 184}, {1406, 702}, {892, 449}, {1919, 955}}};

ZEB_ALWAYS_INLINE void packPixels(const std::uint8_t* rgba, std::uint8_t* pixels, std::size_t count,
                                  Rounding rounding) {
    const auto sum = [](std::uint32_t product, std::uint16_t term) -> std::uint32_t {
        return static_cast<std::uint16_t>(product + term);
    };
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t pixel = loadPixel(rgba + 4 * i);
        const std::uint32_t red = sum((pixel & 0xFF) * 249, rounding.redAndBlue) >> 11;
        const std::uint32_t green = sum(((pixel >> 8) & 0xFF) * 253, rounding.green) >> 10;
        const std::uint32_t blue = sum(((pixel >> 16) & 0xFF) * 249, rounding.redAndBlue) >> 11;
        storeLittleEndian16(pixels + 2 * i, (red << 11) | (green << 5) | blue);
    }
}

ZEB_FOR_AVX2 void packPixelsAVX2(const std::uint8_t* rgba, std::uint8_t* pixels, std::size_t count,
                                 Rounding rounding) {
    packPixels(rgba, pixels, count, rounding);
}

void pack(std::span<const std::uint8_t> rgba, std::span<std::uint8_t> pixels, Rounding rounding) {
    assert(rgba.size() % 4 == 0 && pixels.size() == rgba.size() / 2);
    const std::size_t count = rgba.size() / 4;
    if (processorHasAVX2()) {
        packPixelsAVX2(rgba.data(), pixels.data(), count, rounding);
    } else {
        packPixels(rgba.data(), pixels.data(), count, rounding);
    }
}

}  // namespace

void packRGB565(std::span<const std::uint8_t> rgba, std::span<std::uint8_t> pixels) {
    pack(rgba, pixels, toNearest);
}

void packRGB565Rows(std::span<const std::uint8_t> rgba, int width, std::span<std::uint8_t> pixels) {
    const auto columns = static_cast<std::size_t>(width);
    assert(width > 0 && rgba.size() % (columns * 4) == 0 && pixels.size() == rgba.size() / 2);
    for (std::size_t y = 0; y < rgba.size() / 4 / columns; ++y)
        pack(rgba.subspan(y * columns * 4, columns * 4), pixels.subspan(y * columns * 2, columns * 2),
             byRow[y % byRow.size()]);
}

namespace {

/// Contribution of each channel value to the luminance.
struct LuminanceTables {
    std::array<double, 256> red;
    std::array<double, 256> green;
    std::array<double, 256> blue;

    LuminanceTables() {
        for (std::size_t i = 0; i < 256; ++i) {
            const auto value = static_cast<double>(i);
            red[i] = 0.2126 * value / 255;
            green[i] = 0.7152 * value / 255;
            blue[i] = 0.0722 * value / 255;
        }
    }
};

const LuminanceTables& luminanceTables() {
    static const LuminanceTables tables;
    return tables;
}

ZEB_ALWAYS_INLINE double luminance(const LuminanceTables& tables, const std::uint8_t* rgba) {
    const std::uint32_t pixel = loadPixel(rgba);
    return tables.red[pixel & 0xFF] + tables.green[(pixel >> 8) & 0xFF] + tables.blue[(pixel >> 16) & 0xFF];
}

/// Compares with `levels` thresholds. A separate function, so that a constant `levels` compiles without a
/// loop.
ZEB_ALWAYS_INLINE void quantisePixels(const std::uint8_t* rgba, std::span<std::uint8_t> indices,
                                      const double* thresholds, std::size_t levels) {
    const LuminanceTables& tables = luminanceTables();
    for (std::size_t i = 0; i < indices.size(); ++i) {
        const double value = luminance(tables, rgba + 4 * i);
        unsigned index = 0;
        for (std::size_t level = 0; level < levels; ++level)
            index += value >= thresholds[level] ? 1 : 0;
        indices[i] = static_cast<std::uint8_t>(index);
    }
}

constexpr std::size_t rowsInFlight = 8;
/// Distance in pixels of a row behind the row above: the upper right neighbour is then complete.
constexpr std::size_t lag = 2;

/// Vector types of the baseline instruction set of every supported processor.
struct Pairs {
    typedef double Doubles __attribute__((vector_size(16)));
    typedef std::int64_t Integers __attribute__((vector_size(16)));
};

struct Quads {
    typedef double Doubles __attribute__((vector_size(32)));
    typedef std::int64_t Integers __attribute__((vector_size(32)));
};

/// Up to eight rows of a picture with the data to dither them.
struct Strip {
    const std::uint8_t* rgba;
    std::uint8_t* indices;
    std::size_t width;
    std::size_t rows;
    double* above;  ///< errors from the row above the strip; replaced by the errors of its last row
    const double* thresholds;        ///< of levels 1, 2 ...
    const std::int64_t* valueSteps;  ///< difference of the bit patterns of the values of levels n + 1 and n
};

/// Dithers the rows of a strip in parallel. Each row is two pixels behind the row above. The errors from
/// above are then complete, and the eight pixels are independent. A pixel receives its errors in the order of
/// row-by-row processing, because floating-point sums depend on the order: upper left, upper, upper right,
/// left.
///
/// Each row is one vector lane. At step t, row r is at column t - lag * r.
template <typename Vectors>
class StripDither {
public:
    ZEB_ALWAYS_INLINE explicit StripDither(const Strip& strip)
        : m_strip(strip), m_tables(luminanceTables()) {}

    ZEB_ALWAYS_INLINE void dither(std::size_t levels) {
        const std::size_t width = m_strip.width;
        m_upper[0][0] = m_strip.above[0];
        m_upperRight[0][0] = width > 1 ? m_strip.above[1] : 0;
        constexpr std::size_t delay = lag * (rowsInFlight - 1);
        std::size_t t = 0;
        if (m_strip.rows == rowsInFlight) {
            while (t < std::min(delay, width))
                step<true>(t++, levels);
            while (t < width)
                step<false>(t++, levels);
        }
        while (t < width + delay)
            step<true>(t++, levels);
    }

private:
    using Doubles = typename Vectors::Doubles;
    using Integers = typename Vectors::Integers;
    static constexpr std::size_t lanes = sizeof(Doubles) / sizeof(double);
    static constexpr std::size_t groups = rowsInFlight / lanes;

    /// With `atEdge`, some rows may be outside the picture at the left or right, or the strip has fewer than
    /// eight.
    template <bool atEdge>
    ZEB_ALWAYS_INLINE void step(std::size_t t, std::size_t levels) {
        for (std::size_t group = 0; group < groups; ++group) {
            Doubles value{};
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                const std::size_t row = group * lanes + lane;
                if (!atEdge || isInside(row, t))
                    value[lane] = luminance(m_tables, m_strip.rgba + pixel(row, t) * 4);
            }
            value += m_upperLeft[group] * (1.0 / 16);
            value += m_upper[group] * (5.0 / 16);
            value += m_upperRight[group] * (3.0 / 16);
            value += m_left[group] * (7.0 / 16);

            // The bit pattern of index / levels, summed from the differences between levels.
            Integers quantised{};
            Integers index{};
            for (std::size_t level = 0; level < levels; ++level) {
                const Integers reached = value >= m_strip.thresholds[level];
                quantised ^= reached & m_strip.valueSteps[level];
                index -= reached;
            }
            Doubles error = value - (Doubles)quantised;

            for (std::size_t lane = 0; lane < lanes; ++lane) {
                const std::size_t row = group * lanes + lane;
                if (!atEdge || isInside(row, t)) {
                    m_strip.indices[pixel(row, t)] = static_cast<std::uint8_t>(index[lane]);
                } else {
                    error[lane] = 0;
                }
            }
            m_left[group] = error;
        }
        const std::size_t lastColumn = t - lag * (rowsInFlight - 1);
        if (!atEdge || lastColumn < m_strip.width) m_strip.above[lastColumn] = m_left[groups - 1][lanes - 1];
        passDown(t + lag < m_strip.width ? m_strip.above[t + lag] : 0);
    }

    /// Moves the last error of each row to the row below, and `first` to the topmost row.
    ZEB_ALWAYS_INLINE void passDown(double first) {
        Doubles before{};
        before[lanes - 1] = first;
        for (std::size_t group = 0; group < groups; ++group) {
            m_upperLeft[group] = m_upper[group];
            m_upper[group] = m_upperRight[group];
            if constexpr (lanes == 2) {
                m_upperRight[group] = __builtin_shufflevector(before, m_left[group], 1, 2);
            } else {
                static_assert(lanes == 4);
                m_upperRight[group] = __builtin_shufflevector(before, m_left[group], 3, 4, 5, 6);
            }
            before = m_left[group];
        }
    }

    ZEB_ALWAYS_INLINE bool isInside(std::size_t row, std::size_t t) const {
        return row < m_strip.rows && t - lag * row < m_strip.width;
    }
    ZEB_ALWAYS_INLINE std::size_t pixel(std::size_t row, std::size_t t) const {
        return row * m_strip.width + t - lag * row;
    }

    const Strip m_strip;
    const LuminanceTables& m_tables;
    // Errors from the neighbours of each row.
    Doubles m_left[groups] = {};
    Doubles m_upperLeft[groups] = {};
    Doubles m_upper[groups] = {};
    Doubles m_upperRight[groups] = {};
};

constexpr std::size_t fourColours = 3;  ///< highest index of the four colours of QL screens

ZEB_FOR_AVX2 void ditherFourColoursAVX2(const Strip& strip) {
    StripDither<Quads>(strip).dither(fourColours);
}

void ditherStrip(const Strip& strip, std::size_t levels) {
    if (levels != fourColours) {
        StripDither<Pairs>(strip).dither(levels);
    } else if (processorHasAVX2()) {
        ditherFourColoursAVX2(strip);
    } else {
        StripDither<Pairs>(strip).dither(fourColours);
    }
}

}  // namespace

LuminanceQuantiser::LuminanceQuantiser(int colours) : m_colours(std::clamp(colours, 1, 256)) {
    const int levels = m_colours - 1;
    std::int64_t previous = 0;
    for (int level = 1; level <= levels; ++level) {
        const auto reaches = [&](double value) { return std::round(value * levels) >= level; };
        double threshold = (level - 0.5) / levels;
        while (!reaches(threshold))
            threshold = std::nextafter(threshold, 1.0);
        for (double below; reaches(below = std::nextafter(threshold, 0.0));)
            threshold = below;
        m_thresholds.push_back(threshold);

        const auto bits = std::bit_cast<std::int64_t>(static_cast<double>(level) / levels);
        m_valueSteps.push_back(bits ^ previous);
        previous = bits;
    }
}

void LuminanceQuantiser::quantise(std::span<const std::uint8_t> rgba, std::span<std::uint8_t> indices) const {
    assert(rgba.size() == indices.size() * 4);
    if (m_thresholds.size() == fourColours) {
        quantisePixels(rgba.data(), indices, m_thresholds.data(), fourColours);
    } else {
        quantisePixels(rgba.data(), indices, m_thresholds.data(), m_thresholds.size());
    }
}

void LuminanceQuantiser::dither(std::span<const std::uint8_t> rgba, int width, int height,
                                std::span<std::uint8_t> indices) {
    assert(width > 0 && height > 0);
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    assert(indices.size() == columns * rows && rgba.size() == indices.size() * 4);
    m_errors.assign(columns, 0.0);
    for (std::size_t row = 0; row < rows; row += rowsInFlight) {
        const std::size_t first = row * columns;
        ditherStrip({.rgba = rgba.data() + first * 4,
                     .indices = indices.data() + first,
                     .width = columns,
                     .rows = std::min(rowsInFlight, rows - row),
                     .above = m_errors.data(),
                     .thresholds = m_thresholds.data(),
                     .valueSteps = m_valueSteps.data()},
                    m_thresholds.size());
    }
}

}  // namespace zeb
