#pragma once

#include <string>

#include "cli/encode/EncodeJob.h"
#include "conversion/forecast/SizeForecast.h"
#include "conversion/plan/Settings.h"

namespace zeb::cli {

/// "1.2 GB", "about 1.2 GB" or "at most 1.2 GB", as sure as the forecast is.
std::string forecastSize(const SizeForecast& forecast);

/// The size and the rate in one line, before a conversion begins.
std::string forecastLine(const SizeForecast& forecast);

/// What does not fit and which options would help, in a sentence; empty when all fits. `folder` is where the
/// output goes.
std::string forecastWarning(const SizeForecast& forecast, const std::string& folder);

/// All of a forecast as aligned lines, made harmless for a terminal.
std::string forecastText(const EncodeJob& job, const Settings& settings, const SizeForecast& forecast);

/// The same as one line of JSON, of the type "forecast" (`JsonProgress.h`).
std::string forecastJson(const EncodeJob& job, const Settings& settings, const SizeForecast& forecast);

}  // namespace zeb::cli
