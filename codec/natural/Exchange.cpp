#include "codec/natural/Exchange.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>

#include "platform/base/ProcessorVersions.h"

namespace zeb::natural {

namespace {

/// Errors have three planes in 1/1024: luminance, (r - g) / 4 and (2b - r - g) / 8. A fourth lane of 0 makes
/// a pixel 16 bytes.
constexpr std::size_t lanes = 4;
using Planes = std::array<std::int32_t, lanes>;
constexpr std::size_t colourCount = 4;
constexpr std::array<Planes, colourCount> colourPlanes = {
    {{0, 0, 0, 0}, {218, 256, -128, 0}, {732, -256, -128, 0}, {1024, 0, 0, 0}}};

/// The blur of the error: the outer product of these taps, whose sum is 64.
constexpr std::size_t reach = 3;
constexpr std::size_t taps = 2 * reach + 1;
constexpr std::array<std::int32_t, taps> kernel = {1, 5, 15, 22, 15, 5, 1};

/// Neighbours in the order of trial.
struct Direction {
    std::ptrdiff_t right;
    std::ptrdiff_t down;
};
constexpr std::array<Direction, 4> directions = {{{1, 0}, {0, 1}, {1, 1}, {-1, 1}}};

/// Smallest gain of an exchange: 0.005 in units of the squared error.
constexpr std::int64_t margin = 21474836;

/// A row of the field has the border left, and right one pixel more: stamps are 8 pixels wide.
constexpr std::size_t stampWidth = taps + 1;
constexpr std::size_t fieldStride(std::size_t width) {
    return width + 2 * reach + 1;
}

constexpr std::array<std::int32_t, 3> difference(std::size_t from, std::size_t to) {
    return {colourPlanes[to][0] - colourPlanes[from][0], colourPlanes[to][1] - colourPlanes[from][1],
            colourPlanes[to][2] - colourPlanes[from][2]};
}

/// The constant products of the search.
struct Products {
    /// The change of the field around a pixel that changes from one colour to another.
    using Stamp = std::array<std::int32_t, taps * stampWidth * lanes>;
    std::array<std::array<Stamp, colourCount>, colourCount> stamps{};
    /// The part of the cost that does not depend on the field, by direction.
    std::array<std::array<std::array<std::int64_t, directions.size()>, colourCount>, colourCount> costs{};

    constexpr Products() {
        for (std::size_t from = 0; from < colourCount; ++from) {
            for (std::size_t to = 0; to < colourCount; ++to) {
                const auto change = difference(from, to);
                std::int64_t square = 0;
                for (std::size_t plane = 0; plane < 3; ++plane) {
                    square += change[plane] * change[plane];
                    for (std::size_t y = 0; y < taps; ++y)
                        for (std::size_t x = 0; x < taps; ++x)
                            stamps[from][to][(y * stampWidth + x) * lanes + plane] =
                                kernel[y] * kernel[x] * change[plane];
                }
                for (std::size_t i = 0; i < directions.size(); ++i) {
                    const auto tap = [](std::ptrdiff_t offset) {
                        return kernel[static_cast<std::size_t>(offset + std::ptrdiff_t{reach})];
                    };
                    costs[from][to][i] =
                        2 * (tap(0) * tap(0) - tap(directions[i].right) * tap(directions[i].down)) * square;
                }
            }
        }
    }
};
constexpr Products products;

/// Writes the error of a row: the colour minus the mix that the thresholds state.
ZEB_ALWAYS_INLINE void findErrors(const std::uint64_t* thresholds, const std::uint8_t* indices,
                                  std::size_t width, std::int32_t* errors) {
    for (std::size_t x = 0; x < width; ++x) {
        const auto share = [&](unsigned i) {
            return static_cast<std::int32_t>(thresholds[x] >> 16 * i & 0xFFFF);
        };
        const std::int32_t red = share(1) - share(0);
        const std::int32_t green = share(2) - share(1);
        const std::int32_t white = 16384 - share(2);
        for (std::size_t plane = 0; plane < lanes; ++plane) {
            const std::int32_t goal = (red * colourPlanes[1][plane] + green * colourPlanes[2][plane] +
                                       white * colourPlanes[3][plane] + 8192) >>
                                      14;
            errors[x * lanes + plane] = colourPlanes[indices[x]][plane] - goal;
        }
    }
}

/// Returns the weighted sum; `at(i)` is tap i of 0 ... 6.
template <typename Tap>
ZEB_ALWAYS_INLINE std::int32_t weighted(Tap at) {
    return at(0) + at(6) + 5 * (at(1) + at(5)) + 15 * (at(2) + at(4)) + 22 * at(3);
}

ZEB_ALWAYS_INLINE void blurAcross(const std::int32_t* errors, std::size_t count, std::int32_t* across) {
    for (std::size_t i = 0; i < count; ++i)
        across[i] = weighted([&](std::size_t tap) { return errors[i + tap * lanes]; });
}

ZEB_ALWAYS_INLINE void blurDown(const std::array<const std::int32_t*, taps>& rows, std::size_t count,
                                std::int32_t* field) {
    for (std::size_t i = 0; i < count; ++i)
        field[i] = weighted([&](std::size_t tap) { return rows[tap][i]; });
}

/// The picture and the field for one search.
struct Search {
    const std::uint64_t* thresholds;
    std::uint8_t* indices;
    std::size_t width;
    std::size_t height;
    std::int32_t* errors;
    std::int32_t* across;
    std::int32_t* field;  ///< first pixel of the first row inside the border
};

/// Blurs the error of the whole picture: each row along the row, then seven rows down. Rows outside the
/// picture are 0.
ZEB_ALWAYS_INLINE void fillField(const Search& search) {
    const std::size_t count = search.width * lanes;
    const auto acrossRow = [&](std::size_t y) { return search.across + y % taps * count; };
    for (std::size_t y = 0; y < search.height + reach; ++y) {
        if (y < search.height) {
            findErrors(search.thresholds + y * search.width, search.indices + y * search.width, search.width,
                       search.errors + reach * lanes);
            blurAcross(search.errors, count, acrossRow(y));
        } else {
            std::fill_n(acrossRow(y), count, 0);
        }
        if (y < reach) continue;
        std::array<const std::int32_t*, taps> rows{};
        for (std::size_t tap = 0; tap < taps; ++tap)
            rows[tap] = acrossRow(y + 1 + tap);  // the rows y - 6 ... y; those above the picture are still 0
        blurDown(rows, count, search.field + (y - reach) * fieldStride(search.width) * lanes);
    }
}

ZEB_ALWAYS_INLINE void addStamp(std::int32_t* here, std::size_t stride, const Products::Stamp& stamp) {
    constexpr std::size_t count = stampWidth * lanes;
    for (std::size_t y = 0; y < taps; ++y)
        for (std::size_t i = 0; i < count; ++i)
            here[y * stride + i] += stamp[y * count + i];
}

/// Tries each pixel with its four neighbours and makes the best exchange.
ZEB_ALWAYS_INLINE void exchangeNeighbours(const Search& search) {
    const auto width = static_cast<std::ptrdiff_t>(search.width);
    const auto height = static_cast<std::ptrdiff_t>(search.height);
    const auto stride = static_cast<std::ptrdiff_t>(fieldStride(search.width) * lanes);
    constexpr auto pixel = std::ptrdiff_t{lanes};
    for (std::ptrdiff_t y = 0; y < height; ++y) {
        for (std::ptrdiff_t x = 0; x < width; ++x) {
            std::uint8_t& mine = search.indices[y * width + x];
            std::int32_t* here = search.field + y * stride + x * pixel;
            std::int64_t least = -margin;
            std::size_t best = directions.size();
            for (std::size_t i = 0; i < directions.size(); ++i) {
                const auto [right, down] = directions[i];
                if (x + right < 0 || x + right >= width || y + down >= height) continue;
                const std::uint8_t other = search.indices[(y + down) * width + x + right];
                if (other == mine) continue;
                const std::int32_t* there = here + down * stride + right * pixel;
                const auto change = difference(mine, other);
                std::int64_t gradient = 0;
                for (std::size_t plane = 0; plane < 3; ++plane)
                    gradient += std::int64_t{change[plane]} * (here[plane] - there[plane]);
                const std::int64_t cost = 2 * gradient + products.costs[mine][other][i];
                if (cost < least) {
                    least = cost;
                    best = i;
                }
            }
            if (best == directions.size()) continue;
            const auto [right, down] = directions[best];
            std::uint8_t& other = search.indices[(y + down) * width + x + right];
            constexpr auto border = std::ptrdiff_t{reach};
            std::int32_t* corner = here - border * (stride + pixel);
            const auto length = static_cast<std::size_t>(stride);
            addStamp(corner, length, products.stamps[mine][other]);
            addStamp(corner + down * stride + right * pixel, length, products.stamps[other][mine]);
            std::swap(mine, other);
        }
    }
}

ZEB_ALWAYS_INLINE void run(const Search& search) {
    fillField(search);
    exchangeNeighbours(search);
}

ZEB_FOR_AVX2 void runAVX2(const Search& search) {
    run(search);
}

}  // namespace

void Exchange::improve(std::span<const std::uint64_t> thresholds, int width, int height,
                       std::span<std::uint8_t> indices) {
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    assert(indices.size() == columns * rows && thresholds.size() == indices.size());
    const std::size_t stride = fieldStride(columns);
    m_errors.assign((columns + 2 * reach) * lanes, 0);
    m_across.assign(taps * columns * lanes, 0);
    m_field.assign(stride * (rows + 2 * reach) * lanes, 0);
    const Search search = {.thresholds = thresholds.data(),
                           .indices = indices.data(),
                           .width = columns,
                           .height = rows,
                           .errors = m_errors.data(),
                           .across = m_across.data(),
                           .field = m_field.data() + reach * (stride + 1) * lanes};
    if (processorHasAVX2()) {
        runAVX2(search);
    } else {
        run(search);
    }
}

}  // namespace zeb::natural
