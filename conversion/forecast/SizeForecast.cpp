#include "conversion/forecast/SizeForecast.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "codec/SpriteEncoder.h"
#include "codec/SpriteLayout.h"
#include "conversion/forecast/MovieSize.h"
#include "conversion/sound/AudioReader.h"
#include "format/Layout.h"
#include "platform/files/FileManager.h"
#include "platform/text/PathName.h"

namespace zeb {

namespace {

using RecordSizes = std::vector<std::uint64_t>;

double meanOf(const RecordSizes& sizes) {
    return std::accumulate(sizes.begin(), sizes.end(), 0.0) / static_cast<double>(sizes.size());
}

/// The standard error of the mean as a part of it, of so many pictures at equal distances. Judged by how far
/// neighbours differ: what changes slowly along the film, an even spread of pictures sees (W. G. Cochran,
/// Sampling Techniques, on systematic samples).
std::optional<double> uncertaintyOf(const RecordSizes& sizes, int pictures) {
    if (pictures < 2 || sizes.size() < 2) return std::nullopt;
    double squares = 0;
    for (std::size_t i = 1; i < sizes.size(); ++i) {
        const double difference = static_cast<double>(sizes[i]) - static_cast<double>(sizes[i - 1]);
        squares += difference * difference;
    }
    return std::sqrt(squares / 2 / (pictures - 1) / pictures) / meanOf(sizes);
}

/// The sizes raised by twice the uncertainty of their mean.
RecordSizes raised(RecordSizes sizes, int pictures) {
    const double factor = 1 + 2 * uncertaintyOf(sizes, pictures).value_or(0);
    for (std::uint64_t& size : sizes)
        size = static_cast<std::uint64_t>(std::ceil(static_cast<double>(size) * factor));
    return sizes;
}

std::optional<std::int64_t> firstSecondWithoutSpace(const MovieSize& size, std::int64_t seconds,
                                                    std::optional<std::uint64_t> freeSpace) {
    if (!freeSpace || size.fileBytes() <= *freeSpace) return std::nullopt;
    std::int64_t low = 0;
    std::int64_t high = seconds - 1;  // it ends, at the latest, beyond the space
    while (low < high) {
        const std::int64_t middle = low + (high - low) / 2;
        if (size.startOfSecond(middle + 1) > *freeSpace) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return low;
}

/// One forecast at work: the case, and where sizes of records come from.
class Forecasting {
public:
    using SizesAt = std::function<RecordSizes(const Settings&, FrameSize)>;

    /// `pictures`: how many the sizes come from.
    Forecasting(const ForecastCase& about, ForecastBasis basis, SizesAt sizesAt, int pictures = 0)
        : m_about(about), m_basis(basis), m_sizesAt(std::move(sizesAt)), m_pictures(pictures) {}

    SizeForecast make() const;

private:
    bool fits(const ConversionPlan& plan, const RecordSizes& sizes) const {
        const MovieSize size(plan, m_about.settings.title, m_about.sound.channels, sizes);
        return !size.firstRefusedSecond() && (!m_about.freeSpace || size.fileBytes() <= *m_about.freeSpace);
    }
    std::optional<int> largestRate(const RecordSizes& sizes) const;
    std::optional<FrameSize> largestSize(const RecordSizes& sizes) const;
    FrameSize requestFor(int longerSide) const;
    Settings settingsFor(FrameSize request) const;
    double bytesPerRecordLeft() const;

    const ForecastCase& m_about;
    const ForecastBasis m_basis;
    const SizesAt m_sizesAt;
    const int m_pictures;
};

SizeForecast Forecasting::make() const {
    const ConversionPlan& plan = m_about.plan;
    const RecordSizes sizes = m_sizesAt(m_about.settings, plan.size);
    const MovieSize size(plan, m_about.settings.title, m_about.sound.channels, sizes);

    SizeForecast forecast;
    forecast.plan = plan;
    forecast.bytes = size.fileBytes();
    forecast.bytesPerSecond = static_cast<double>(forecast.bytes) / static_cast<double>(plan.seconds);
    forecast.basis = m_basis;
    forecast.isExact = m_basis == ForecastBasis::arithmetic && m_about.sound.isCertain;
    if (m_basis == ForecastBasis::samples) {
        forecast.samples = m_pictures;
        forecast.uncertainty = uncertaintyOf(sizes, m_pictures);
    }
    forecast.formatEndsAt = size.firstRefusedSecond();
    forecast.freeSpace = m_about.freeSpace;
    forecast.spaceEndsAt = firstSecondWithoutSpace(size, plan.seconds, m_about.freeSpace);
    if (!forecast.fits()) {
        const RecordSizes careful = m_basis == ForecastBasis::samples ? raised(sizes, m_pictures) : sizes;
        forecast.suggestion.fps = largestRate(careful);
        forecast.suggestion.size = largestSize(careful);
    }
    return forecast;
}

std::optional<int> Forecasting::largestRate(const RecordSizes& sizes) const {
    ConversionPlan plan = m_about.plan;
    int fitting = 0;
    int tooHigh = plan.fps;
    while (tooHigh - fitting > 1) {
        plan.fps = fitting + (tooHigh - fitting) / 2;
        plan.totalFrames = plan.seconds * plan.fps;
        (fits(plan, sizes) ? fitting : tooHigh) = plan.fps;
    }
    return fitting > 0 ? std::optional(fitting) : std::nullopt;
}

/// Width and height for the settings, with so many pixels on the longer side of the frames.
FrameSize Forecasting::requestFor(int longerSide) const {
    const Settings& settings = m_about.settings;
    const SourceInfo& source = m_about.plan.source;
    const bool keepsAspect = settings.preserveAspect && settings.shape.fit == Shape::Fit::scale;
    const auto [width, height] =
        keepsAspect ? sourceOnScreen(source.width, source.height, settings) : m_about.plan.size;
    // Rounded up: the longer side shall be what limits the frames.
    const auto other = [longerSide](std::int64_t shorter, std::int64_t longer) {
        return static_cast<int>((longerSide * shorter + longer - 1) / longer);
    };
    if (width >= height) return {longerSide, other(height, width)};
    return {other(width, height), longerSide};
}

Settings Forecasting::settingsFor(FrameSize request) const {
    Settings settings = m_about.settings;
    settings.width = request.width;
    settings.height = request.height;
    return settings;
}

/// What a record may have on average, judged by the mean alone; not negative.
double Forecasting::bytesPerRecordLeft() const {
    const ConversionPlan& plan = m_about.plan;
    const double seconds = static_cast<double>(plan.seconds);
    double perSecond = static_cast<double>(layout::maxWord) / std::max(seconds - 1, 1.0);
    if (m_about.freeSpace) perSecond = std::min(perSecond, static_cast<double>(*m_about.freeSpace) / seconds);
    const double rest = layout::sampleRate * m_about.sound.channels + 3.0 * layout::wordSize;
    return std::max((perSecond - rest) / plan.fps - static_cast<double>(layout::wordSize), 0.0);
}

std::optional<FrameSize> Forecasting::largestSize(const RecordSizes& sizes) const {
    constexpr int step = 8;
    constexpr int smallestSide = 64;
    const auto longerSide = [](FrameSize size) { return std::max(size.width, size.height); };
    const auto pixels = [](FrameSize size) { return double{1} * size.width * size.height; };
    const FrameSize now = m_about.plan.size;

    // Every try costs encoding the samples, so the search goes by what the nearest try so far took per pixel.
    const double allowed = bytesPerRecordLeft();
    double bytesPerPixel = meanOf(sizes) / pixels(now);
    int tooLarge = longerSide(now) / step;
    int tooSmall = smallestSide / step - 1;
    std::optional<FrameSize> fitting;
    for (int tries = 0; tooLarge - tooSmall > 1; ++tries) {
        constexpr int mostGuesses = 4;  // usually two or three find it
        const double share = std::sqrt(allowed / bytesPerPixel / pixels(now));
        const int guess = tries < mostGuesses ? static_cast<int>(share * longerSide(now) / step)
                                              : (tooSmall + tooLarge) / 2;
        const int side = std::clamp(guess, tooSmall + 1, tooLarge - 1);
        const FrameSize request = requestFor(side * step);
        const Settings settings = settingsFor(request);
        ConversionPlan plan = m_about.plan;
        plan.size = frameGeometry(plan.source.width, plan.source.height, settings).size;
        RecordSizes tried = m_sizesAt(settings, plan.size);
        if (m_basis == ForecastBasis::samples) tried = raised(std::move(tried), m_pictures);
        bytesPerPixel = meanOf(tried) / pixels(plan.size);
        if (fits(plan, tried)) {
            tooSmall = side;
            fitting = request;
        } else {
            tooLarge = side;
        }
    }
    return fitting;
}

}  // namespace

SoundOutlook soundOutlook(const MediaAsset& asset, const Settings& settings) {
    if (!settings.includeAudio || settings.audioChannels < 1 || asset.soundTracks().empty()) return {};
    return {std::min(settings.audioChannels, 2), false};
}

SoundOutlook certainSoundOutlook(const MediaAsset& asset, const Settings& settings,
                                 const IsCancelled& isCancelled) {
    SoundOutlook outlook = soundOutlook(asset, settings);
    if (outlook.isCertain) return outlook;
    if (!AudioReader::hasSound(asset, settings.audioTrackIndex, isCancelled)) return {};
    outlook.isCertain = true;
    return outlook;
}

std::optional<std::uint64_t> spaceFor(const std::string& output) {
    std::string folder = folderOf(output);
    while (!files::kindOf(folder) && folderOf(folder) != folder)
        folder = folderOf(folder);
    return files::freeSpace(folder);
}

SizeForecast forecastUpperBound(const ForecastCase& about) {
    if (about.settings.qlModeNumber != 32) {
        return Forecasting(about, ForecastBasis::arithmetic,
                           [](const Settings&, FrameSize size) {
                               return RecordSizes{sprite::mode4RecordBytes(size.width, size.height)};
                           })
            .make();
    }
    return Forecasting(about, ForecastBasis::bound,
                       [](const Settings&, FrameSize size) {
                           return RecordSizes{sprite::mostMode32RecordBytes(size.width, size.height)};
                       })
        .make();
}

SizeForecast forecastSize(const ForecastCase& about, RecordSamples& samples, const IsCancelled& isCancelled) {
    if (about.settings.qlModeNumber != 32) return forecastUpperBound(about);
    return Forecasting(
               about, ForecastBasis::samples,
               [&](const Settings& settings, FrameSize) {
                   const SourceInfo& source = about.plan.source;
                   return samples.at(frameRecipe(source.width, source.height, settings), isCancelled);
               },
               samples.distinctPictures())
        .make();
}

}  // namespace zeb
