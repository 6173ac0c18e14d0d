#pragma once

#include <string>

#include "conversion/forecast/SizeForecast.h"

namespace zeb {

/// Returns the localised text about a movie's size: the size, or a warning that the movie would not fit, with
/// suggestions.
std::string forecastText(const SizeForecast& forecast);

}  // namespace zeb
