#pragma once

#include <string>

namespace zeb {

/// A length of time as a clock shows it, rounded to whole seconds: "7:05", "1:02:03"; "—" when negative or
/// without end.
std::string formatDuration(double seconds);

}  // namespace zeb
