#include "cli/SpeedMeter.h"

#include <gtest/gtest.h>

namespace zeb::cli {
namespace {

using namespace std::chrono_literals;

class SpeedMeterTest : public ::testing::Test {
protected:
    // Frames come at `perSecond` for `seconds`.
    void run(int perSecond, int seconds) {
        for (int i = 0; i < perSecond * seconds; ++i) {
            m_now += std::chrono::nanoseconds(1s) / perSecond;
            m_meter.note(m_now, ++m_frames);
        }
    }

    SpeedMeter::TimePoint m_now{};
    std::int64_t m_frames = 0;
    SpeedMeter m_meter{m_now};
};

TEST_F(SpeedMeterTest, EstimatesTheTimeLeft) {
    EXPECT_FALSE(m_meter.secondsFor(100));
    run(200, 2);
    EXPECT_NEAR(m_meter.speed(), 200, 1);
    EXPECT_NEAR(m_meter.secondsFor(1000).value(), 5, 0.1);
    EXPECT_EQ(m_meter.secondsFor(0).value(), 0);
}

TEST_F(SpeedMeterTest, ForgetsWhatWasLongAgo) {
    run(500, 60);
    run(20, 15);
    EXPECT_NEAR(m_meter.speed(), 20, 1);
}

}  // namespace
}  // namespace zeb::cli
