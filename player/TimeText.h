#pragma once

#include <string>

namespace zeb {

/// A moment of a movie as its player shows it, whole seconds: "1:01", "1:02:05"; "0:00" when negative or
/// without end.
std::string formatTime(double seconds);

}  // namespace zeb
