#pragma once

namespace zeb {

/// Stands for a value that is not known.
inline constexpr const char* unknownText = "—";

}  // namespace zeb
