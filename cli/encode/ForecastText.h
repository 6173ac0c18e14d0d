#pragma once

#include <string>

#include "cli/encode/EncodeJob.h"
#include "conversion/forecast/SizeForecast.h"
#include "conversion/plan/Settings.h"

namespace zeb::cli {

/// Returns "1.2 GB", "about 1.2 GB" or "at most 1.2 GB", depending on the basis.
std::string forecastSize(const SizeForecast& forecast);

/// Returns the size and the rate in one line, for display before a conversion.
std::string forecastLine(const SizeForecast& forecast);

/// Returns a sentence about what does not fit and which options would help; empty if all fits. `folder` is
/// the output folder.
std::string forecastWarning(const SizeForecast& forecast, const std::string& folder);

/// Returns the whole forecast as aligned lines, escaped for a terminal.
std::string forecastText(const EncodeJob& job, const Settings& settings, const SizeForecast& forecast);

/// Returns the forecast as one line of JSON, of the type "forecast" (`JsonProgress.h`).
std::string forecastJson(const EncodeJob& job, const Settings& settings, const SizeForecast& forecast);

}  // namespace zeb::cli
