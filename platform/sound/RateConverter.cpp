#include "platform/sound/RateConverter.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <map>
#include <mutex>
#include <numbers>

namespace zeb {
namespace {

constexpr int halfWidth = 32;                // source frames on either side, at full bandwidth
constexpr int phases = 256;                  // positions between two source frames in the table
constexpr double kaiserBeta = 8.5;           // side lobes at -84 dB
constexpr double leastBandwidth = 1.0 / 64;  // limits the kernel's size for very different rates
constexpr std::size_t framesAtOnce = 512;    // read from the source

/// Returns the modified Bessel function of the first kind and order 0.
double bessel(double x) {
    double sum = 1;
    double term = 1;
    for (int k = 1; term > sum * 1e-12; ++k) {
        term *= (x / (2 * k)) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

double sinc(double x) {
    const double angle = std::numbers::pi * x;
    return std::abs(angle) < 1e-9 ? 1 : std::sin(angle) / angle;
}

}  // namespace

/// The weights of the source frames for each phase. Between phases they are interpolated linearly, with an
/// error below -100 dB.
class RateConverter::Kernel {
public:
    explicit Kernel(double bandwidth)
        : m_half(static_cast<int>(std::ceil(halfWidth / bandwidth))),
          m_weights(static_cast<std::size_t>(phases + 1) * taps()) {
        const double edge = bessel(kaiserBeta);
        for (int phase = 0; phase <= phases; ++phase) {
            float* const row = m_weights.data() + static_cast<std::size_t>(phase) * taps();
            double sum = 0;
            for (std::size_t tap = 0; tap < taps(); ++tap) {
                const double distance =
                    static_cast<double>(tap) - (m_half - 1) - static_cast<double>(phase) / phases;
                const double place = distance / m_half;
                const double window = bessel(kaiserBeta * std::sqrt(std::max(0.0, 1 - place * place))) / edge;
                const double weight = sinc(distance * bandwidth) * window;
                row[tap] = static_cast<float>(weight);
                sum += weight;
            }
            for (std::size_t tap = 0; tap < taps(); ++tap)  // normalised: keeps constants
                row[tap] = static_cast<float>(row[tap] / sum);
        }
    }

    /// Kernels are cached: all conversions upwards share one, and a device has few rates.
    static std::shared_ptr<const Kernel> forBandwidth(double bandwidth) {
        static std::mutex mutex;
        static std::map<double, std::shared_ptr<const Kernel>> kernels;
        const std::lock_guard lock(mutex);
        auto& kernel = kernels[bandwidth];
        if (!kernel) kernel = std::make_shared<const Kernel>(bandwidth);
        return kernel;
    }

    std::size_t taps() const { return 2 * static_cast<std::size_t>(m_half); }
    /// Number of frames before the frame at the position.
    std::size_t before() const { return static_cast<std::size_t>(m_half - 1); }

    void apply(const float* frames, double fraction, float& left, float& right) const {
        const double place = fraction * phases;
        const auto phase = static_cast<std::size_t>(place);
        const auto between = static_cast<float>(place - static_cast<double>(phase));
        const float* const lower = m_weights.data() + phase * taps();
        const float* const upper = lower + taps();
        left = 0;
        right = 0;
        for (std::size_t tap = 0; tap < taps(); ++tap) {
            const float weight = lower[tap] + (upper[tap] - lower[tap]) * between;
            left += weight * frames[2 * tap];
            right += weight * frames[2 * tap + 1];
        }
    }

private:
    int m_half;
    std::vector<float> m_weights;
};

RateConverter::RateConverter(int from, int to)
    : m_from(from),
      m_to(to),
      m_kernel(Kernel::forBandwidth(std::clamp(static_cast<double>(to) / from, leastBandwidth, 1.0))) {
    assert(from >= 1 && to >= 1);
    m_window.resize(2 * (2 * m_kernel->taps() + framesAtOnce));
    m_filled = m_kernel->before();
}

RateConverter::~RateConverter() = default;
RateConverter::RateConverter(RateConverter&&) noexcept = default;
RateConverter& RateConverter::operator=(RateConverter&&) noexcept = default;

std::size_t RateConverter::render(AudioSource& source, std::span<float> samples) noexcept {
    const std::size_t room = samples.size() / 2;
    std::size_t frames = 0;
    for (; frames < room && fill(source); ++frames) {
        m_kernel->apply(m_window.data() + 2 * m_left,
                        static_cast<double>(m_fraction) / static_cast<double>(m_to), samples[2 * frames],
                        samples[2 * frames + 1]);
        advance();
    }
    return frames;
}

/// Fills the window beyond the kernel; returns false if the position is past the source's last frame.
bool RateConverter::fill(AudioSource& source) noexcept {
    while (m_left + m_kernel->taps() > m_filled) {
        if (m_left > 0) {  // drop the frames before the kernel
            const std::size_t passed = std::min(m_left, m_filled);
            std::copy(m_window.begin() + static_cast<std::ptrdiff_t>(2 * passed),
                      m_window.begin() + static_cast<std::ptrdiff_t>(2 * m_filled), m_window.begin());
            m_filled -= passed;
            m_left -= passed;
        }
        const auto rest = std::span(m_window).subspan(2 * m_filled).first(2 * framesAtOnce);
        const std::size_t count = m_ended ? 0 : source.render(rest);
        std::fill(rest.begin() + static_cast<std::ptrdiff_t>(2 * count), rest.end(), 0.0F);
        m_ended = m_ended || count < framesAtOnce;
        m_pulled += static_cast<std::int64_t>(count);
        m_filled += framesAtOnce;
        if (m_ended && m_position >= m_pulled) return false;
    }
    return !m_ended || m_position < m_pulled;
}

void RateConverter::advance() {
    m_fraction += m_from;
    const std::int64_t whole = m_fraction / m_to;
    m_fraction %= m_to;
    m_position += whole;
    m_left += static_cast<std::size_t>(whole);
}

}  // namespace zeb
