#include "cli/ProgressLines.h"

#include <gtest/gtest.h>

namespace zeb::cli {
namespace {

TEST(ProgressLines, NeverPassTheTerminal) {
    for (int columns = 1; columns < 120; ++columns) {
        for (const std::int64_t frames : {0, 1, 249, 250}) {
            const ProgressState state{frames, 250, 25, 999'999'999'999, 12345.6, 86399};
            EXPECT_LT(barLine(state, columns).size(), static_cast<std::size_t>(columns));
        }
    }
}

}  // namespace
}  // namespace zeb::cli
