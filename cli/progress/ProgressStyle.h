#pragma once

namespace zeb::cli {

/// Output style of the progress of a conversion.
enum class ProgressStyle {
    automatic,  ///< `bar` on a terminal, `plain` elsewhere
    bar,        ///< one line that is redrawn
    plain,      ///< a line about once a second
    json,       ///< one JSON object per line
    none,       ///< only the summary at the end
};

}  // namespace zeb::cli
