#pragma once

#include <string>

#include "conversion/forecast/SizeForecast.h"

namespace zeb {

/// What the window says of a movie's size, localised: the size, or that the movie would not fit and what
/// would.
std::string forecastText(const SizeForecast& forecast);

}  // namespace zeb
