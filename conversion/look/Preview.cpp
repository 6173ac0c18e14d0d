#include "conversion/look/Preview.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "conversion/plan/SettingsError.h"
#include "platform/text/NumberText.h"

namespace zeb {
namespace {

constexpr int gap = 8;  // pixels

/// Converts R, G, B, A to a picture of B, G, R, A.
FrameImage imageOf(std::span<const std::uint8_t> rgba, FrameSize size) {
    FrameImage image{size.width, size.height, {}};
    image.pixels.assign(rgba.begin(), rgba.end());
    for (std::size_t at = 0; at < image.pixels.size(); at += 4)
        std::swap(image.pixels[at], image.pixels[at + 2]);
    return image;
}

FrameImage greyImage(int width, int height) {
    FrameImage image{width, height, {}};
    image.pixels.assign(std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                        128);
    for (std::size_t at = 3; at < image.pixels.size(); at += 4)
        image.pixels[at] = 255;
    return image;
}

void paste(const FrameImage& image, int x, int y, FrameImage& target) {
    const std::ptrdiff_t rowBytes = std::ptrdiff_t{4} * image.width;
    for (int row = 0; row < image.height; ++row) {
        const std::ptrdiff_t pixel = std::ptrdiff_t{y + row} * target.width + x;
        std::copy_n(image.pixels.begin() + rowBytes * row, rowBytes, target.pixels.begin() + 4 * pixel);
    }
}

/// Returns the settings for a time outside a time range: the length of the whole film.
double filmDuration(const MediaAsset& asset, Settings settings) {
    settings.time = {};
    return planConversion(asset, settings).duration;
}

std::shared_ptr<const FrameTools> toolsFor(const ConversionPlan& plan, const Settings& settings) {
    return std::make_shared<const FrameTools>(frameRecipe(plan.source.width, plan.source.height, settings));
}

}  // namespace

Preview::Preview(const MediaAsset& asset, const Settings& settings, int threads,
                 const IsCancelled& isCancelled)
    : m_plan(planConversion(asset, settings)),
      m_filmDuration(filmDuration(asset, settings)),
      m_schedule(grabSchedule(m_plan)),
      m_maker(toolsFor(m_plan, settings)),
      m_generator(asset.makeImageGenerator(threads, isCancelled)) {}

std::int64_t Preview::frameAt(const TimePoint& time) const {
    const double seconds = time.seconds(m_filmDuration);
    if (seconds >= m_filmDuration && seconds > 0)
        throw SettingsError({"error_start_beyond_end_format", {durationText(m_filmDuration)}});
    constexpr double rounding = 1e-6;
    const auto frame = static_cast<std::int64_t>(std::floor(seconds * m_plan.fps + rounding));
    const std::int64_t index = frame - m_plan.firstFrame;
    const double end = std::ceil(m_plan.duration * m_plan.fps - rounding);
    if (index < 0 || static_cast<double>(index) >= std::max(end, 1.0))
        throw SettingsError({"error_outside_range"});
    return index;
}

std::int64_t Preview::frameOf(int index, int count) const {
    const double share = (index + 0.5) / count;
    const auto frame = static_cast<std::int64_t>(share * m_plan.duration * m_plan.fps);
    return std::clamp<std::int64_t>(frame, 0, m_plan.totalFrames - 1);
}

PreviewFrame Preview::frame(std::int64_t index) {
    const MediaTime time = m_schedule.at(index);
    const std::shared_ptr<const Picture> picture = m_generator->copyImage(time);
    const FrameSize size = m_plan.size;
    PreviewFrame frame;
    frame.original = imageOf(m_maker.original(*picture), size);
    // Every record of the encoder can be decoded.
    frame.result = m_decoder.decodeFrame(m_maker.record(*picture), size.width, size.height).value();
    frame.time = time.seconds();
    return frame;
}

FrameImage sideBySide(const FrameImage& left, const FrameImage& right) {
    return contactSheet(std::array{left, right}, 2);
}

FrameImage contactSheet(std::span<const FrameImage> pictures, int columns) {
    const int width = pictures.front().width;
    const int height = pictures.front().height;
    const int count = static_cast<int>(pictures.size());
    columns = std::clamp(columns, 1, count);
    const int rows = (count + columns - 1) / columns;
    FrameImage sheet = greyImage(columns * (width + gap) - gap, rows * (height + gap) - gap);
    for (int i = 0; i < count; ++i) {
        paste(pictures[static_cast<std::size_t>(i)], i % columns * (width + gap),
              i / columns * (height + gap), sheet);
    }
    return sheet;
}

}  // namespace zeb
