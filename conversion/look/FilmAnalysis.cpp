#include "conversion/look/FilmAnalysis.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "conversion/forecast/RecordSamples.h"
#include "conversion/look/BlackBars.h"
#include "conversion/look/FrameGeometry.h"
#include "conversion/plan/SourceAnalysis.h"
#include "platform/text/LocalizedText.h"

namespace zeb {
namespace {

using Pictures = std::vector<std::shared_ptr<const Picture>>;
using Bitmap = std::vector<std::uint8_t>;

Bitmap drawn(const Picture& picture, FrameSize size, const Framing& framing) {
    Bitmap rgba(std::size_t{4} * static_cast<std::size_t>(size.width) *
                static_cast<std::size_t>(size.height));
    picture.draw({rgba, size.width, size.height, DrawingColourSpace::sRGB, framing});
    return rgba;
}

/// Returns the picture's size with sides of at most `most` pixels.
FrameSize reduced(double width, double height, int most) {
    const double scale = std::min(1.0, most / std::max(width, height));
    const auto side = [scale](double length) {
        return std::max(1, static_cast<int>(std::lround(length * scale)));
    };
    return {side(width), side(height)};
}

void settleCrop(const Pictures& pictures, FrameSize source, Settings& settings,
                const std::function<void(const std::string&)>& logged) {
    settings.shape.crop = Shape::Crop::none;
    BlackBars bars(source.width, source.height);
    for (const auto& picture : pictures)
        bars.add(drawn(*picture, source, {}));
    const std::optional<PixelRectangle> part = bars.picture();
    if (part) {
        settings.shape.crop = Shape::Crop::rectangle;
        settings.shape.part = *part;
    }
    if (!logged) return;
    logged(part ? localizedText("log_bars_format", {std::int64_t{part->width}, std::int64_t{part->height},
                                                    std::int64_t{part->x}, std::int64_t{part->y},
                                                    std::int64_t{source.width}, std::int64_t{source.height}})
                : localizedText("log_no_bars"));
}

/// Returns the luminance (ITU-R BT.709 weights on the encoded values) below which this share of pixels lies.
double quantile(const std::array<std::uint64_t, 256>& histogram, double share) {
    std::uint64_t total = 0;
    for (const std::uint64_t count : histogram)
        total += count;
    const double wanted = share * static_cast<double>(total);
    std::uint64_t sum = 0;
    for (std::size_t value = 0; value < histogram.size(); ++value) {
        sum += histogram[value];
        if (static_cast<double>(sum) >= wanted) return static_cast<double>(value) / 255;
    }
    return 1;
}

void settleLevels(const Pictures& pictures, FrameSize source, Settings& settings,
                  const std::function<void(const std::string&)>& logged) {
    constexpr int sampleSide = 160;
    constexpr double outside = 0.005;  // share of the pixels that may become black or white
    // Larger corrections would show the noise of dark or foggy films.
    constexpr double mostBlack = 0.25;
    constexpr double leastWhite = 0.6;
    const Framing framing = frameGeometry(source.width, source.height, settings).framing;
    const FrameSize size = reduced((framing.right - framing.left) * source.width,
                                   (framing.bottom - framing.top) * source.height, sampleSide);
    const Framing part{framing.left, framing.top, framing.right, framing.bottom};
    std::array<std::uint64_t, 256> histogram{};
    for (const auto& picture : pictures) {
        const Bitmap rgba = drawn(*picture, size, part);
        for (std::size_t at = 0; at < rgba.size(); at += 4)
            ++histogram[(rgba[at] * 54U + rgba[at + 1] * 183U + rgba[at + 2] * 19U) >> 8];
    }
    settings.look.autoLevels = false;
    settings.look.black = std::min(quantile(histogram, outside), mostBlack);
    settings.look.white = std::max(quantile(histogram, 1 - outside), leastWhite);
    if (!logged) return;
    const auto percent = [](double value) { return std::int64_t{std::lround(100 * value)}; };
    logged(localizedText("log_levels_format", {percent(settings.look.black), percent(settings.look.white)}));
}

}  // namespace

Settings settleAutomatic(const MediaAsset& asset, const Settings& settings, int threads,
                         const IsCancelled& isCancelled,
                         const std::function<void(const std::string&)>& logged) {
    Settings settled = settings;
    const bool cropsBars = settings.shape.crop == Shape::Crop::automatic;
    if (!cropsBars && !settings.look.autoLevels) return settled;
    SamplingEffort effort;
    effort.pictures = 32;
    effort.decodedPictures = 2;
    effort.threads = threads;
    effort.movieSeconds = asset.videoTracks().front().end.time;
    const Pictures pictures = samplePictures(asset, effort, isCancelled);
    const SourceInfo info = sourceInfo(asset.videoTracks().front());
    const FrameSize source{std::max(info.width, 1), std::max(info.height, 1)};
    if (cropsBars) settleCrop(pictures, source, settled, logged);
    if (settings.look.autoLevels) settleLevels(pictures, source, settled, logged);
    return settled;
}

}  // namespace zeb
