#include "cli/ProgressLines.h"

#include <gtest/gtest.h>

namespace zeb::cli {
namespace {

ProgressState halfway() {
    return {125, 250, 25, 3'400'000, 123.44, 72};
}

TEST(ProgressLines, FitTheTerminal) {
    const std::pair<int, const char*> cases[] = {
        {200, "[####################....................]   50 %  123 fps  1:12 left  3.4 MB"},
        {60, "[###########...........]   50 %  123 fps  1:12 left  3.4 MB"},
        {45, "[###....]   50 %  123 fps  1:12 left  3.4 MB"},
        {43, "[##...]   50 %  123 fps  1:12 left  3.4 MB"},
        {42, "[######......]   50 %  123 fps  1:12 left"},
        {35, "[##...]   50 %  123 fps  1:12 left"},
        {34, " 50 %  123 fps  1:12 left"},
        {20, " 50 %  1:12 left"},
        {10, " 50 %"},
        {4, " 50"},
        {1, ""},
    };
    for (const auto& [columns, expected] : cases) {
        EXPECT_EQ(barLine(halfway(), columns), expected) << columns;
    }
    EXPECT_EQ(barLine(halfway(), 0), barLine(halfway(), 80));
}

TEST(ProgressLines, NeverPassTheTerminal) {
    for (int columns = 1; columns < 120; ++columns) {
        for (const std::int64_t frames : {0, 1, 249, 250}) {
            const ProgressState state{frames, 250, 25, 999'999'999'999, 12345.6, 86399};
            EXPECT_LT(barLine(state, columns).size(), static_cast<std::size_t>(columns));
        }
    }
}

TEST(ProgressLines, SayWhatIsNotKnownYet) {
    const ProgressState start{0, 1, 1, 0, 0, std::nullopt};
    EXPECT_EQ(barLine(start, 45), "[.......]    0 %  -- fps  -:-- left  0 bytes");
    EXPECT_EQ(plainLine(start), "  0 %  0 of 1 frame  -- fps  -:-- left  0 bytes");
    EXPECT_EQ(plainLine(halfway()), " 50 %  125 of 250 frames  123 fps  1:12 left  3.4 MB");
    const ProgressState almost{249, 250, 25, 0, 9.96, 0.0};
    EXPECT_EQ(plainLine(almost), " 99 %  249 of 250 frames  10.0 fps  0:00 left  0 bytes");
}

}  // namespace
}  // namespace zeb::cli
