#include "conversion/comparison/MeasuredPicture.h"

#include <array>
#include <cmath>

namespace zeb {
namespace {

using TransferTable = std::array<float, 256>;

const TransferTable& decodedValues() {
    static const TransferTable table = [] {
        TransferTable values{};
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double v = static_cast<double>(i) / 255;
            values[i] = static_cast<float>(v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4));
        }
        return values;
    }();
    return table;
}

Plane decoded(const MeasuredPicture& picture, std::size_t channel) {
    const TransferTable& table = decodedValues();
    Plane plane(picture.count());
    for (std::size_t i = 0; i < plane.size(); ++i)
        plane[i] = table[picture.pixels[4 * i + channel]];
    return plane;
}

}  // namespace

LinearLight linearLight(const MeasuredPicture& picture) {
    return {decoded(picture, 0), decoded(picture, 1), decoded(picture, 2)};
}

Plane luminance(const MeasuredPicture& picture) {
    const TransferTable& table = decodedValues();
    Plane plane(picture.count());
    for (std::size_t i = 0; i < plane.size(); ++i) {
        const std::uint8_t* pixel = picture.pixels.data() + 4 * i;
        plane[i] = 0.2126F * table[pixel[0]] + 0.7152F * table[pixel[1]] + 0.0722F * table[pixel[2]];
    }
    return plane;
}

}  // namespace zeb
