#include "media/drawing/ColourConversion.h"

#include <algorithm>
#include <cmath>

namespace zeb::ffmpeg {
namespace {

constexpr double whiteNits = 203;     // diffuse white of high-dynamic-range video, ITU-R BT.2408
constexpr double hlgPeakNits = 1000;  // of the reference display, ITU-R BT.2100
constexpr int finerSteps = 4095;      // number of steps of tables over roots

double decodeSRGB(double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}
double encodeSRGB(double l) {
    return l <= 0.0031308 ? l * 12.92 : 1.055 * std::pow(l, 1 / 2.4) - 0.055;
}

/// SMPTE ST 2084; light in nits.
namespace pq {
constexpr double m1 = 2610.0 / 16384, m2 = 2523.0 / 4096 * 128;
constexpr double c1 = 3424.0 / 4096, c2 = 2413.0 / 4096 * 32, c3 = 2392.0 / 4096 * 32;

double toNits(double v) {
    const double p = std::pow(v, 1 / m2);
    return 10000 * std::pow(std::max(p - c1, 0.0) / (c2 - c3 * p), 1 / m1);
}
double fromNits(double nits) {
    const double p = std::pow(nits / 10000, m1);
    return std::pow((c1 + c2 * p) / (1 + c3 * p), m2);
}
}  // namespace pq

/// Inverse of the hybrid log-gamma opto-electronic transfer function; scene light 0 ... 1.
double decodeHLG(double v) {
    constexpr double a = 0.17883277, b = 1 - 4 * a;
    const double c = 0.5 - a * std::log(4 * a);
    return v <= 0.5 ? v * v / 3 : (std::exp((v - c) / a) + b) / 12;
}

/// Returns the light of a component: 1 = white in standard range, 1 = 203 nits for PQ, scene light for HLG.
double lightOf(Transfer transfer, double v) {
    switch (transfer) {
        case Transfer::sRGB:
            return decodeSRGB(v);
        case Transfer::video:
            return v < 0.081 ? v / 4.5 : std::pow((v + 0.099) / 1.099, 1 / 0.45);
        case Transfer::gamma22:
            return std::pow(v, 2.2);
        case Transfer::gamma26:
            return std::pow(v, 2.6);
        case Transfer::gamma28:
            return std::pow(v, 2.8);
        case Transfer::smpte240m:
            return v < 0.0913 ? v / 4 : std::pow((v + 0.1115) / 1.1115, 1 / 0.45);
        case Transfer::linear:
            return v;
        case Transfer::pq:
            return pq::toNits(v) / whiteNits;
        case Transfer::hlg:
            return decodeHLG(v);
    }
    return v;
}

struct Chromaticities {
    double rx, ry, gx, gy, bx, by, wx, wy;
};

/// ITU-T H.273, table 2.
Chromaticities chromaticities(Primaries primaries) {
    switch (primaries) {
        case Primaries::bt709:
            return {0.640, 0.330, 0.300, 0.600, 0.150, 0.060, 0.3127, 0.3290};
        case Primaries::bt601with625lines:
            return {0.640, 0.330, 0.290, 0.600, 0.150, 0.060, 0.3127, 0.3290};
        case Primaries::bt601with525lines:
            return {0.630, 0.340, 0.310, 0.595, 0.155, 0.070, 0.3127, 0.3290};
        case Primaries::bt470m:
            return {0.670, 0.330, 0.210, 0.710, 0.140, 0.080, 0.3100, 0.3160};
        case Primaries::film:
            return {0.681, 0.319, 0.243, 0.692, 0.145, 0.049, 0.3100, 0.3160};
        case Primaries::bt2020:
            return {0.708, 0.292, 0.170, 0.797, 0.131, 0.046, 0.3127, 0.3290};
        case Primaries::dciP3:
            return {0.680, 0.320, 0.265, 0.690, 0.150, 0.060, 0.3140, 0.3510};
        case Primaries::displayP3:
            return {0.680, 0.320, 0.265, 0.690, 0.150, 0.060, 0.3127, 0.3290};
    }
    return {};
}

using Matrix = std::array<double, 9>;  // by rows

Matrix inverse(const Matrix& m) {
    const double d = m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
                     m[2] * (m[3] * m[7] - m[4] * m[6]);
    return {
        (m[4] * m[8] - m[5] * m[7]) / d, (m[2] * m[7] - m[1] * m[8]) / d, (m[1] * m[5] - m[2] * m[4]) / d,
        (m[5] * m[6] - m[3] * m[8]) / d, (m[0] * m[8] - m[2] * m[6]) / d, (m[2] * m[3] - m[0] * m[5]) / d,
        (m[3] * m[7] - m[4] * m[6]) / d, (m[1] * m[6] - m[0] * m[7]) / d, (m[0] * m[4] - m[1] * m[3]) / d};
}

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            for (std::size_t k = 0; k < 3; ++k)
                result[row * 3 + column] += a[row * 3 + k] * b[k * 3 + column];
        }
    }
    return result;
}

/// Returns the matrix from RGB light to XYZ (SMPTE RP 177). Each axis is divided by the white point's value,
/// so that different whites map onto each other.
Matrix toWhiteRelativeXYZ(Primaries primaries) {
    const Chromaticities c = chromaticities(primaries);
    const Matrix xyz = {c.rx,           c.gx, c.bx, c.ry, c.gy, c.by, 1 - c.rx - c.ry, 1 - c.gx - c.gy,
                        1 - c.bx - c.by};
    const std::array<double, 3> white = {c.wx / c.wy, 1, (1 - c.wx - c.wy) / c.wy};
    const Matrix inverted = inverse(xyz);
    Matrix result{};
    for (std::size_t column = 0; column < 3; ++column) {
        const double strength = inverted[column * 3] * white[0] + inverted[column * 3 + 1] * white[1] +
                                inverted[column * 3 + 2] * white[2];
        for (std::size_t row = 0; row < 3; ++row) {
            result[row * 3 + column] = xyz[row * 3 + column] * strength / white[row];
        }
    }
    return result;
}

/// Maps light up to `peakNits` to a display whose maximum is diffuse white: the curve of ITU-R BT.2390,
/// section 5.4.1 (black level 0), in PQ values. Argument and result are in nits.
double toneMapped(double nits, double peakNits) {
    const double peak = pq::fromNits(peakNits);
    const double target = pq::fromNits(whiteNits) / peak;
    const double knee = 1.5 * target - 0.5;
    const double e = std::min(pq::fromNits(nits) / peak, 1.0);
    if (e < knee || target >= 1) return nits;
    const double t = (e - knee) / (1 - knee);
    const double t2 = t * t, t3 = t2 * t;
    const double mapped =
        (2 * t3 - 3 * t2 + 1) * knee + (t3 - 2 * t2 + t) * (1 - knee) + (-2 * t3 + 3 * t2) * target;
    return pq::toNits(mapped * peak);
}

std::uint8_t toByte(double v) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(v, 0.0, 1.0) * 255));
}

}  // namespace

ColourConversion::ColourConversion(const ColourDescription& colour)
    : m_isTable(colour.primaries == Primaries::bt709 && colour.transfer != Transfer::pq &&
                colour.transfer != Transfer::hlg),
      m_isHLG(colour.transfer == Transfer::hlg) {
    std::array<double, levels> light{};
    for (std::size_t i = 0; i < light.size(); ++i) {
        light[i] = lightOf(colour.transfer, static_cast<double>(i) / (levels - 1));
    }
    if (m_isTable) {
        const bool isSame = colour.transfer == Transfer::sRGB;
        for (std::size_t i = 0; i < light.size(); ++i) {
            m_table[i] = toByte(isSame ? static_cast<double>(i) / (levels - 1) : encodeSRGB(light[i]));
        }
        return;
    }

    m_light.assign(light.begin(), light.end());
    const Matrix gamut =
        product(inverse(toWhiteRelativeXYZ(Primaries::bt709)), toWhiteRelativeXYZ(colour.primaries));
    std::transform(gamut.begin(), gamut.end(), m_gamut.begin(),
                   [](double v) { return static_cast<float>(v); });
    m_encode.resize(finerSteps + 1);
    for (std::size_t i = 0; i < m_encode.size(); ++i) {
        const double root = static_cast<double>(i) / finerSteps;
        m_encode[i] = toByte(encodeSRGB(root * root));
    }

    if (colour.transfer != Transfer::pq && !m_isHLG) return;
    const double peakNits = m_isHLG ? hlgPeakNits : std::clamp<double>(colour.peakNits, whiteNits, 10000);
    m_largestLight = static_cast<float>((m_isHLG ? hlgPeakNits : 10000) / whiteNits);
    m_toneScale.resize(finerSteps + 1, 1);
    for (std::size_t i = 1; i < m_toneScale.size(); ++i) {
        const double fraction = std::pow(static_cast<double>(i) / finerSteps, 4);
        const double nits = fraction * m_largestLight * whiteNits;
        m_toneScale[i] = static_cast<float>(toneMapped(nits, peakNits) / std::max(nits, 1e-9));
        if (nits > peakNits) m_toneScale[i] = static_cast<float>(whiteNits / nits);
    }
    if (!m_isHLG) return;
    m_systemGamma.resize(finerSteps + 1);
    for (std::size_t i = 0; i < m_systemGamma.size(); ++i) {
        const double luminance = std::pow(static_cast<double>(i) / finerSteps, 2);
        // ITU-R BT.2100: display light = peak * luminance^(gamma - 1) * component, gamma 1.2 at 1000 nits.
        m_systemGamma[i] = static_cast<float>(hlgPeakNits / whiteNits * std::pow(luminance, 0.2));
    }
}

void ColourConversion::convertRow(const std::uint16_t* red, const std::uint16_t* green,
                                  const std::uint16_t* blue, int count, std::uint8_t* rgba,
                                  std::ptrdiff_t step) const {
    if (!m_isTable) {
        convertThroughLight(red, green, blue, count, rgba, step);
        return;
    }
    const std::uint8_t* table = m_table.data();
    for (int i = 0; i < count; ++i, rgba += step) {
        rgba[0] = table[red[i] & (levels - 1)];
        rgba[1] = table[green[i] & (levels - 1)];
        rgba[2] = table[blue[i] & (levels - 1)];
        rgba[3] = 255;
    }
}

void ColourConversion::convertThroughLight(const std::uint16_t* red, const std::uint16_t* green,
                                           const std::uint16_t* blue, int count, std::uint8_t* rgba,
                                           std::ptrdiff_t step) const {
    const auto stepOf = [](float root) {
        return static_cast<std::size_t>(std::clamp(root, 0.0F, 1.0F) * finerSteps + 0.5F);
    };
    for (int i = 0; i < count; ++i, rgba += step) {
        float r = m_light[red[i] & (levels - 1)];
        float g = m_light[green[i] & (levels - 1)];
        float b = m_light[blue[i] & (levels - 1)];
        if (m_isHLG) {
            const float luminance = 0.2627F * r + 0.6780F * g + 0.0593F * b;
            const float factor = m_systemGamma[stepOf(std::sqrt(luminance))];
            r *= factor;
            g *= factor;
            b *= factor;
        }
        if (!m_toneScale.empty()) {
            // Scale all components by the factor of the largest one: reduces brightness, keeps hue.
            const float largest = std::max({r, g, b});
            const float factor = m_toneScale[stepOf(std::sqrt(std::sqrt(largest / m_largestLight)))];
            r *= factor;
            g *= factor;
            b *= factor;
        }
        const std::array<float, 3> light = {m_gamut[0] * r + m_gamut[1] * g + m_gamut[2] * b,
                                            m_gamut[3] * r + m_gamut[4] * g + m_gamut[5] * b,
                                            m_gamut[6] * r + m_gamut[7] * g + m_gamut[8] * b};
        for (std::size_t c = 0; c < 3; ++c)
            rgba[c] = m_encode[stepOf(std::sqrt(std::max(light[c], 0.0F)))];
        rgba[3] = 255;
    }
}

}  // namespace zeb::ffmpeg
