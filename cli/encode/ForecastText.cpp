#include "cli/encode/ForecastText.h"

#include <cmath>
#include <optional>
#include <vector>

#include "cli/Json.h"
#include "cli/Text.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/NumberText.h"

namespace zeb::cli {
namespace {

std::string sizeText(FrameSize size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string rateText(const SizeForecast& forecast) {
    return byteText(static_cast<std::uint64_t>(std::llround(forecast.bytesPerSecond))) + " per second";
}

std::string secondText(std::int64_t second) {
    return durationText(static_cast<double>(second));
}

/// Returns the size with its uncertainty.
KeyedText sizeOf(const SizeForecast& forecast) {
    const char* key = forecast.isExact                           ? "forecast_size_exact_format"
                      : forecast.basis == ForecastBasis::samples ? "forecast_size_about_format"
                                                                 : "forecast_size_most_format";
    return {key, {byteText(forecast.bytes)}};
}

/// Returns the basis of the size, in parentheses; empty for an upper bound.
std::string basisText(const SizeForecast& forecast) {
    if (forecast.isExact) return " (" + std::to_string(forecast.bytes) + " bytes)";
    if (forecast.basis != ForecastBasis::samples) return "";
    std::string text = " (";
    if (forecast.uncertainty) {
        text += "within " + std::to_string(std::llround(std::ceil(200 * *forecast.uncertainty))) + " %, ";
    }
    return text + "from " + countText(forecast.samples, "picture", "pictures") + ")";
}

/// Returns the options that help, as typed.
std::vector<std::string> suggestedOptions(const ForecastSuggestion& suggestion) {
    std::vector<std::string> options;
    if (suggestion.fps) options.push_back("--fps " + std::to_string(*suggestion.fps));
    if (suggestion.size) options.push_back("--size " + sizeText(*suggestion.size));
    return options;
}

std::string suggestionText(const ForecastSuggestion& suggestion) {
    const auto options = suggestedOptions(suggestion);
    if (options.empty()) return "";
    return options.size() == 1 ? options[0] : options[0] + " or " + options[1];
}

KeyedText suggestionWarning(const ForecastSuggestion& suggestion) {
    const auto options = suggestedOptions(suggestion);
    if (options.empty()) return {"warning_forecast_nothing_fits"};
    if (options.size() == 1) return {"warning_forecast_try_format", {options[0]}};
    return {"warning_forecast_try_either_format", {options[0], options[1]}};
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
    return englishText(sizeOf(forecast));
}

std::string forecastLine(const SizeForecast& forecast) {
    return "Forecast: " + forecastSize(forecast) + ", " + rateText(forecast);
}

std::string forecastWarning(const SizeForecast& forecast, const std::string& folder) {
    if (forecast.fits()) return "";
    KeyedText text;
    if (!forecast.fitsSpace()) {
        text = {"warning_forecast_space_format", {sizeOf(forecast), folder, byteText(*forecast.freeSpace)}};
    }
    if (!forecast.fitsFormat()) {
        const KeyedText format{"warning_forecast_limit_format",
                               {secondText(*forecast.formatEndsAt), secondText(forecast.plan.seconds)}};
        text = forecast.fitsSpace() ? format : KeyedText{"warning_forecast_both_format", {format, text}};
    }
    return localizedText("warning_forecast_format", {text, suggestionWarning(forecast.suggestion)});
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
        line("Suggestion", suggestion.empty() ? "none (no frame rate or size would fit)" : suggestion);
    }
    return text;
}

std::string forecastJson(const EncodeJob& job, const Settings& settings, const SizeForecast& forecast) {
    const ConversionPlan& plan = forecast.plan;
    const ForecastSuggestion& suggestion = forecast.suggestion;
    JsonValue size;
    if (suggestion.size)
        size = JsonFields{{"width", suggestion.size->width}, {"height", suggestion.size->height}};
    return jsonLine({
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
        {"uncertainty", forecast.uncertainty},
        {"fits", forecast.fits()},
        {"formatEndsAt", forecast.formatEndsAt},
        {"freeSpace", forecast.freeSpace},
        {"spaceEndsAt", forecast.spaceEndsAt},
        {"suggestedFramesPerSecond", suggestion.fps},
        {"suggestedSize", size},
    });
}

}  // namespace zeb::cli
