#include "cli/ForecastText.h"

#include <cmath>
#include <optional>

#include "cli/JsonText.h"
#include "cli/Text.h"

namespace zeb::cli {
namespace {

using Json = nlohmann::ordered_json;

template <typename Value>
Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json();
}

std::string sizeText(FrameSize size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string rateText(const SizeForecast& forecast) {
    return byteText(static_cast<std::uint64_t>(std::llround(forecast.bytesPerSecond))) + " per second";
}

std::string secondText(std::int64_t second) {
    return durationText(static_cast<double>(second));
}

/// What the size rests on, where that is not plain.
std::string basisText(const SizeForecast& forecast) {
    if (forecast.isExact) return " (" + std::to_string(forecast.bytes) + " bytes)";
    if (forecast.basis != ForecastBasis::samples) return "";
    std::string text = " (";
    if (forecast.uncertainty) {
        text += "within " + std::to_string(std::llround(std::ceil(200 * *forecast.uncertainty))) + " %, ";
    }
    return text + "from " + countText(forecast.samples, "picture", "pictures") + ")";
}

/// The options that help, as one would type them.
std::string suggestionText(const ForecastSuggestion& suggestion) {
    std::string text;
    if (suggestion.fps) text = "--fps " + std::to_string(*suggestion.fps);
    if (suggestion.size) text += (text.empty() ? "" : " or ") + ("--size " + sizeText(*suggestion.size));
    return text;
}

const char* basisName(ForecastBasis basis) {
    switch (basis) {
        case ForecastBasis::arithmetic:
            return "arithmetic";
        case ForecastBasis::samples:
            return "samples";
        case ForecastBasis::bound:
            break;
    }
    return "bound";
}

}  // namespace

std::string forecastSize(const SizeForecast& forecast) {
    std::string bytes = byteText(forecast.bytes);
    if (forecast.isExact) return bytes;
    return (forecast.basis == ForecastBasis::samples ? "about " : "at most ") + bytes;
}

std::string forecastLine(const SizeForecast& forecast) {
    return "Forecast: " + forecastSize(forecast) + ", " + rateText(forecast);
}

std::string forecastWarning(const SizeForecast& forecast, const std::string& folder) {
    if (forecast.fits()) return "";
    std::string text = "the movie would ";
    if (!forecast.fitsFormat()) {
        text += "pass the format's 4 GiB after " + secondText(*forecast.formatEndsAt) + " of " +
                secondText(forecast.plan.seconds);
    }
    if (!forecast.fitsSpace()) {
        if (!forecast.fitsFormat()) text += " and ";
        text += "need " + forecastSize(forecast) + ", but " + folder + " has only " +
                byteText(*forecast.freeSpace) + " left";
    }
    const std::string suggestion = suggestionText(forecast.suggestion);
    return text + (suggestion.empty() ? "; no rate or size is small enough" : "; try " + suggestion);
}

std::string forecastText(const EncodeJob& job, const Settings& settings, const SizeForecast& forecast) {
    const ConversionPlan& plan = forecast.plan;
    std::string text = printable(job.input) + " -> " + printable(job.output) + ": " + sizeText(plan.size) +
                       ", " + countText(plan.fps, "frame", "frames") + " per second, " +
                       secondText(plan.seconds) + ", Mode " + std::to_string(settings.qlModeNumber) + "\n";
    const auto line = [&text](const char* label, const std::string& value) {
        constexpr std::size_t labelWidth = 15;
        std::string padded = label;
        padded.resize(labelWidth, ' ');
        text += "  " + padded + value + "\n";
    };
    line("File size", forecastSize(forecast) + basisText(forecast));
    line("Data rate", rateText(forecast));
    line("4 GiB limit",
         forecast.fitsFormat() ? "not reached" : "passed after " + secondText(*forecast.formatEndsAt));
    if (!forecast.freeSpace) {
        line("Free space", "unknown");
    } else {
        line("Free space",
             byteText(*forecast.freeSpace) +
                 (forecast.fitsSpace() ? "" : ", used up after " + secondText(*forecast.spaceEndsAt)));
    }
    if (!forecast.fits()) {
        const std::string suggestion = suggestionText(forecast.suggestion);
        line("What would fit", suggestion.empty() ? "no rate or size" : suggestion);
    }
    return text;
}

std::string forecastJson(const EncodeJob& job, const Settings& settings, const SizeForecast& forecast) {
    const ConversionPlan& plan = forecast.plan;
    const ForecastSuggestion& suggestion = forecast.suggestion;
    Json size;
    if (suggestion.size) size = Json{{"width", suggestion.size->width}, {"height", suggestion.size->height}};
    return jsonLine(Json{
        {"type", "forecast"},
        {"input", job.input},
        {"output", job.output},
        {"width", plan.size.width},
        {"height", plan.size.height},
        {"framesPerSecond", plan.fps},
        {"frames", plan.totalFrames},
        {"seconds", plan.seconds},
        {"mode", settings.qlModeNumber},
        {"bytes", forecast.bytes},
        {"bytesPerSecond", forecast.bytesPerSecond},
        {"basis", basisName(forecast.basis)},
        {"exact", forecast.isExact},
        {"samples", forecast.samples},
        {"uncertainty", orNull(forecast.uncertainty)},
        {"fits", forecast.fits()},
        {"formatEndsAt", orNull(forecast.formatEndsAt)},
        {"freeSpace", orNull(forecast.freeSpace)},
        {"spaceEndsAt", orNull(forecast.spaceEndsAt)},
        {"suggestedFramesPerSecond", orNull(suggestion.fps)},
        {"suggestedSize", size},
    });
}

}  // namespace zeb::cli
