#include "media/drawing/MatrixConversion.h"

#include "media/ffmpeg/Libraries.h"
#include "platform/base/ProcessorVersions.h"

namespace zeb::ffmpeg {
namespace {

struct LumaWeights {
    double red, blue;
};

/// ITU-T H.273, table 4.
LumaWeights lumaWeights(int matrix) {
    switch (matrix) {
        case AVCOL_SPC_BT709:
            return {0.2126, 0.0722};
        case AVCOL_SPC_FCC:
            return {0.30, 0.11};
        case AVCOL_SPC_SMPTE240M:
            return {0.212, 0.087};
        case AVCOL_SPC_BT2020_NCL:
            return {0.2627, 0.0593};
        default:
            return {0.299, 0.114};
    }
}

/// Returns the nearest integer within 0 ... largest. The compiler vectorises this form.
ZEB_ALWAYS_INLINE std::uint16_t component(float value, float largest) {
    value += 0.5F;
    value = value > 0.5F ? value : 0.5F;
    value = value < largest ? value : largest;
    return static_cast<std::uint16_t>(static_cast<std::int32_t>(value));
}

/// Converts a row of Y'CbCr to one component; subtracts the offsets first.
struct Mixture {
    float lumaOffset, lumaScale, chromaOffset, fromCb, fromCr, largest;
};

ZEB_ALWAYS_INLINE void mixRow(const Mixture& mixture, const std::array<const std::uint16_t*, 3>& planes,
                              int count, std::uint16_t* __restrict result) {
    const std::uint16_t* __restrict luma = planes[0];
    const std::uint16_t* __restrict cb = planes[1];
    const std::uint16_t* __restrict cr = planes[2];
    const Mixture m = mixture;
    for (int i = 0; i < count; ++i) {
        const float y = (static_cast<float>(luma[i]) - m.lumaOffset) * m.lumaScale;
        const float blueDifference = static_cast<float>(cb[i]) - m.chromaOffset;
        const float redDifference = static_cast<float>(cr[i]) - m.chromaOffset;
        result[i] = component(y + m.fromCb * blueDifference + m.fromCr * redDifference, m.largest);
    }
}

void mixRowAnywhere(const Mixture& mixture, const std::array<const std::uint16_t*, 3>& planes, int count,
                    std::uint16_t* result) {
    mixRow(mixture, planes, count, result);
}

ZEB_FOR_AVX2 void mixRowAVX2(const Mixture& mixture, const std::array<const std::uint16_t*, 3>& planes,
                             int count, std::uint16_t* result) {
    mixRow(mixture, planes, count, result);
}

}  // namespace

MatrixConversion::MatrixConversion(const ColourDescription& colour, ComponentFamily family, int largest)
    : m_family(family), m_largest(static_cast<float>(largest)) {
    // With 16 bits the studio range is that of 8 bits times 256.
    const bool isFull = colour.fullRange || family == ComponentFamily::rgb;
    m_lumaOffset = isFull ? 0 : 16 * 256;
    m_lumaScale = m_largest / (isFull ? 65535 : 219 * 256);
    m_chromaOffset = 128 * 256;
    const double chromaScale = largest / (isFull ? 65535.0 : 224.0 * 256);
    const auto scaled = [chromaScale](double factor) { return static_cast<float>(factor * chromaScale); };
    if (colour.matrix == AVCOL_SPC_YCGCO) {  // Cg and Co are in the planes of Cb and Cr
        m_redFromCb = m_blueFromCb = scaled(-1);
        m_greenFromCb = m_redFromCr = scaled(1);
        m_blueFromCr = scaled(-1);
        return;
    }
    const LumaWeights weights = lumaWeights(colour.matrix);
    const double green = 1 - weights.red - weights.blue;
    m_redFromCr = scaled(2 * (1 - weights.red));
    m_blueFromCb = scaled(2 * (1 - weights.blue));
    m_greenFromCb = scaled(-2 * (1 - weights.blue) * weights.blue / green);
    m_greenFromCr = scaled(-2 * (1 - weights.red) * weights.red / green);
}

void MatrixConversion::convertRow(const std::array<const std::uint16_t*, 3>& planes, int count,
                                  std::uint16_t* red, std::uint16_t* green, std::uint16_t* blue) const {
    if (m_family == ComponentFamily::yCbCr) {
        // One component at a time: the compiler vectorises only such loops.
        const auto mix = processorHasAVX2() ? mixRowAVX2 : mixRowAnywhere;
        Mixture mixture = {m_lumaOffset, m_lumaScale, m_chromaOffset, m_redFromCb, m_redFromCr, m_largest};
        mix(mixture, planes, count, red);
        mixture.fromCb = m_greenFromCb;
        mixture.fromCr = m_greenFromCr;
        mix(mixture, planes, count, green);
        mixture.fromCb = m_blueFromCb;
        mixture.fromCr = m_blueFromCr;
        mix(mixture, planes, count, blue);
        return;
    }
    const std::array<std::uint16_t*, 3> results = {red, green, blue};
    for (std::size_t c = 0; c < results.size(); ++c) {
        const std::uint16_t* source = planes[m_family == ComponentFamily::grey ? 0 : c];
        for (int i = 0; i < count; ++i) {
            results[c][i] =
                component((static_cast<float>(source[i]) - m_lumaOffset) * m_lumaScale, m_largest);
        }
    }
}

}  // namespace zeb::ffmpeg
