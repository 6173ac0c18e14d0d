#include "ui/model/MovieTexts.h"

#include <algorithm>
#include <cstdint>

#include "platform/text/LocalizedText.h"
#include "platform/text/NumberText.h"
#include "platform/text/UTF8.h"

namespace zeb {
namespace {

std::string audioText(const Settings& settings) {
    if (!settings.includeAudio || settings.audioChannels == 0) return localizedText("target_audio_off");
    if (settings.audioChannels == 1) return localizedText("target_audio_mono");
    return localizedText("target_audio_stereo");
}

}  // namespace

TargetDescription targetDescription(const SourceInfo& source, const Settings& settings) {
    // Uses the same function as the run.
    return {targetSize(source.width, source.height, settings),
            settings.fps < 1 ? 1 : std::min(settings.fps, std::max(source.fps, 1)), settings.qlModeNumber,
            audioText(settings)};
}

std::string sourceTargetText(const SourceInfo& source, const Settings& settings) {
    const TargetDescription target = targetDescription(source, settings);
    return localizedText("source_target_format",
                         {std::int64_t{source.width}, std::int64_t{source.height}, std::int64_t{source.fps},
                          std::int64_t{target.size.width}, std::int64_t{target.size.height},
                          std::int64_t{target.fps}, std::int64_t{target.qlModeNumber}, target.audioText});
}

std::string versionText(const std::string& version, const std::string& build) {
    const std::string number = trimmed(version).empty() ? unknownText : version;
    return "v" + number + (trimmed(build).empty() ? "" : " (" + build + ")");
}

namespace {

std::string suggestionText(const ForecastSuggestion& suggestion) {
    const std::int64_t fps = suggestion.fps.value_or(0);
    const auto [width, height] = suggestion.size.value_or(FrameSize{});
    if (suggestion.fps && suggestion.size)
        return localizedText("forecast_suggest_both_format",
                             {fps, std::int64_t{width}, std::int64_t{height}});
    if (suggestion.fps) return localizedText("forecast_suggest_rate_format", {fps});
    if (suggestion.size)
        return localizedText("forecast_suggest_size_format", {std::int64_t{width}, std::int64_t{height}});
    return {};
}

std::string sizeText(const SizeForecast& forecast) {
    const std::string size = byteCountText(forecast.bytes);
    const std::string perSecond = byteCountText(static_cast<std::uint64_t>(forecast.bytesPerSecond));
    if (forecast.isExact) return localizedText("forecast_exact_format", {size, perSecond});
    if (forecast.basis == ForecastBasis::bound)
        return localizedText("forecast_bound_format", {size, perSecond});
    return localizedText("forecast_about_format", {size, perSecond});
}

}  // namespace

std::string forecastText(const SizeForecast& forecast) {
    if (forecast.fits()) return sizeText(forecast);
    const std::string size = byteCountText(forecast.bytes);
    const std::string trouble =
        forecast.formatEndsAt
            ? localizedText("forecast_too_large_format",
                            {size, formatDuration(static_cast<double>(*forecast.formatEndsAt))})
            : localizedText("forecast_no_space_format",
                            {size, byteCountText(forecast.freeSpace.value_or(0))});
    const std::string suggestion = suggestionText(forecast.suggestion);
    return suggestion.empty() ? trouble : trouble + " " + suggestion;
}

}  // namespace zeb
