#include "ui/model/ForecastText.h"

#include <cstdint>

#include "platform/text/LocalizedText.h"
#include "platform/text/NumberText.h"

namespace zeb {
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
