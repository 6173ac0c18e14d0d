#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <utility>

#include "ui/DurationText.h"
#include "ui/RemainingTime.h"

namespace zeb {
namespace {

using std::chrono::milliseconds;

TEST(DurationTextTest, Durations) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::pair<double, const char*> cases[] = {
        {0, "0:00"},         {-0.0, "0:00"},
        {59.5, "1:00"},      {3599.4, "59:59"},
        {3599.5, "1:00:00"}, {3723, "1:02:03"},
        {-0.1, "—"},         {360000, "100:00:00"},
        {infinity, "—"},     {infinity - infinity, "—"},
        {1e300, "—"},
    };
    for (const auto& [seconds, text] : cases)
        EXPECT_EQ(formatDuration(seconds), text) << seconds;
}

TEST(RemainingTimeTest, FollowsTheSmoothedSpeed) {
    const struct {
        int at;  ///< milliseconds
        double progress;
        const char* text;
    } samples[] = {
        {0, 0, "—"},           {100, 0.1, "—"},  // too close to the first
        {10000, 0.1, "1:30"},                    // 0.01 per second
        {10100, 0.2, "1:20"},                    // too close: the old speed
        {20000, 0.05, "1:35"},                   // falling: no sample
        {30000, 0.1, "1:30"},                    // standing still: no speed, but a sample
        {40000, 0.3, "0:58"},                    // 0.02: 0.8 x 0.01 + 0.2 x 0.02 = 0.012
        {50000, 1.5, "0:00"},  {60000, -1, "—"},
    };
    RemainingTime remaining;
    const Clock::Instant start{};
    for (const auto& [at, progress, text] : samples) {
        remaining.updateETA(progress, start + milliseconds(at));
        EXPECT_EQ(remaining.etaText(), text) << at;
    }
    remaining.reset();
    EXPECT_EQ(remaining.etaText(), "—");
    remaining.updateETA(0.5, start + milliseconds(70000));
    EXPECT_EQ(remaining.etaText(), "—") << "the speed is forgotten as well";
}

}  // namespace
}  // namespace zeb
