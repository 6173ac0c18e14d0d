#pragma once

namespace zeb::cli {

/// How a conversion shows how far it is.
enum class ProgressStyle {
    automatic,  ///< `bar` on a terminal, `plain` elsewhere
    bar,        ///< one line that is drawn anew
    plain,      ///< a line now and then
    json,       ///< one JSON object per line
    none,       ///< only the summary at the end
};

}  // namespace zeb::cli
