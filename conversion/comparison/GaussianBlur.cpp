#include "conversion/comparison/GaussianBlur.h"

#include <algorithm>
#include <cmath>

namespace zeb {
namespace {

/// The samples -margin ... size + margin - 1 of an axis, as positions in 0 ... size - 1.
class MirroredAxis {
public:
    MirroredAxis(int size, int margin) : m_margin(margin) {
        const int period = 2 * size;
        m_positions.reserve(static_cast<std::size_t>(size + 2 * margin));
        for (int i = -margin; i < size + margin; ++i) {
            const int phase = (i % period + period) % period;
            m_positions.push_back(static_cast<std::size_t>(std::min(phase, period - 1 - phase)));
        }
    }

    std::size_t operator[](int i) const { return m_positions[static_cast<std::size_t>(i + m_margin)]; }
    /// Copies a row into `padded`, which begins `margin` samples before the row.
    void pad(const float* row, std::vector<float>& padded) const {
        padded.resize(m_positions.size());
        for (std::size_t i = 0; i < padded.size(); ++i)
            padded[i] = row[m_positions[i]];
    }

private:
    int m_margin;
    std::vector<std::size_t> m_positions;
};

/// One half of a symmetric kernel: the weights of the distances 0, 1, 2 ...
struct Kernel {
    std::vector<float> weights;

    explicit Kernel(double sigma) {
        const int radius = std::max(static_cast<int>(std::ceil(4 * sigma)), 1);
        std::vector<double> samples;
        double sum = 0;
        for (int d = 0; d <= radius; ++d) {
            samples.push_back(std::exp(-d * d / (2 * sigma * sigma)));
            sum += d == 0 ? samples.back() : 2 * samples.back();
        }
        for (const double sample : samples)
            weights.push_back(static_cast<float>(sample / sum));
    }
    int margin() const { return static_cast<int>(weights.size()) - 1; }

    void filterRow(const std::vector<float>& padded, int width, float* out) const {
        const float* middle = padded.data() + margin();
        for (int x = 0; x < width; ++x)
            out[x] = weights[0] * middle[x];
        for (int d = 1; d <= margin(); ++d) {
            const float weight = weights[static_cast<std::size_t>(d)];
            const float* before = middle - d;
            const float* after = middle + d;
            for (int x = 0; x < width; ++x)
                out[x] += weight * (before[x] + after[x]);
        }
    }

    template <typename RowAt>
    void filterColumns(const RowAt& rowAt, int width, int height, Plane& out) const {
        for (int y = 0; y < height; ++y) {
            float* target = out.data() + static_cast<std::ptrdiff_t>(y) * width;
            const float* row = rowAt(y);
            for (int x = 0; x < width; ++x)
                target[x] = weights[0] * row[x];
            for (int d = 1; d <= margin(); ++d) {
                const float weight = weights[static_cast<std::size_t>(d)];
                const float* above = rowAt(y - d);
                const float* below = rowAt(y + d);
                for (int x = 0; x < width; ++x)
                    target[x] += weight * (above[x] + below[x]);
            }
        }
    }
};

/// A box filter whose width may be a fraction: weight 1 up to `radius`, `edge` at radius + 1.
struct Box {
    int radius;
    double edge;
    double scale;  ///< 1 / sum of the weights

    /// `variance` of the filter in square pixels, positive.
    explicit Box(double variance)
        : radius(static_cast<int>((std::sqrt(12 * variance + 1) - 1) / 2)),
          edge((2.0 * radius + 1) * (radius * (radius + 1.0) - 3 * variance) /
               (6 * (variance - (radius + 1.0) * (radius + 1.0)))),
          scale(1 / (2.0 * radius + 1 + 2 * edge)) {}
    int margin() const { return radius + 1; }

    void filterRow(const std::vector<float>& padded, int width, float* out) const {
        const float* middle = padded.data() + margin();
        double sum = 0;
        for (int d = -radius; d <= radius; ++d)
            sum += middle[d];
        for (int x = 0; x < width; ++x) {
            const double first = middle[x - radius - 1];
            const double last = middle[x + radius + 1];
            out[x] = static_cast<float>(scale * (sum + edge * (first + last)));
            sum += last - middle[x - radius];
        }
    }

    template <typename RowAt>
    void filterColumns(const RowAt& rowAt, int width, int height, Plane& out) const {
        std::vector<double> sums(static_cast<std::size_t>(width));
        double* sum = sums.data();
        for (int d = -radius; d <= radius; ++d) {
            const float* row = rowAt(d);
            for (int x = 0; x < width; ++x)
                sum[x] += row[x];
        }
        for (int y = 0; y < height; ++y) {
            float* target = out.data() + static_cast<std::ptrdiff_t>(y) * width;
            const float* above = rowAt(y - radius - 1);
            const float* first = rowAt(y - radius);
            const float* below = rowAt(y + radius + 1);
            for (int x = 0; x < width; ++x) {
                const double last = below[x];
                target[x] = static_cast<float>(scale * (sum[x] + edge * (above[x] + last)));
                sum[x] += last - first[x];
            }
        }
    }
};

template <typename Filter>
void filterBoth(Plane& plane, int width, int height, const Filter& filter) {
    const MirroredAxis columns(width, filter.margin());
    const MirroredAxis rows(height, filter.margin());
    Plane between(plane.size());
    std::vector<float> padded;
    for (int y = 0; y < height; ++y) {
        const std::ptrdiff_t start = static_cast<std::ptrdiff_t>(y) * width;
        columns.pad(plane.data() + start, padded);
        filter.filterRow(padded, width, between.data() + start);
    }
    const auto rowAt = [&](int y) { return between.data() + rows[y] * static_cast<std::size_t>(width); };
    filter.filterColumns(rowAt, width, height, plane);
}

/// Returns the plane filtered by `boxes` boxes that together have the variance of the Gaussian.
Plane boxBlur(Plane plane, int width, int height, double sigma, int boxes) {
    const Box box(sigma * sigma / boxes);
    for (int i = 0; i < boxes; ++i)
        filterBoth(plane, width, height, box);
    return plane;
}

}  // namespace

Plane gaussianBlur(const Plane& plane, int width, int height, double sigma) {
    if (sigma < firstBoxSigma) {
        Plane result = plane;
        filterBoth(result, width, height, Kernel(sigma));
        return result;
    }
    // The largest part of the error is inversely proportional to the number of boxes and cancels out.
    Plane result = boxBlur(plane, width, height, sigma, 6);
    const Plane coarser = boxBlur(plane, width, height, sigma, 4);
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = 3 * result[i] - 2 * coarser[i];
    return result;
}

}  // namespace zeb
