#include "cli/progress/SpeedMeter.h"

namespace zeb::cli {
namespace {

using namespace std::chrono_literals;

constexpr auto measuredTime = 10s;
constexpr auto markDistance = 250ms;  // limits the list at high frame rates
constexpr auto leastTime = 200ms;     // shorter times are not significant

}  // namespace

void SpeedMeter::note(TimePoint now, std::int64_t framesDone) {
    while (m_marks.size() > 1 && now - m_marks[1].time >= measuredTime)
        m_marks.pop_front();
    const std::chrono::duration<double> elapsed = now - m_marks.front().time;
    if (elapsed >= leastTime) {
        m_speed = static_cast<double>(framesDone - m_marks.front().frames) / elapsed.count();
    }
    if (now - m_marks.back().time >= markDistance) m_marks.push_back({now, framesDone});
}

std::optional<double> SpeedMeter::secondsFor(std::int64_t frames) const {
    if (m_speed <= 0) return std::nullopt;
    return static_cast<double>(frames) / m_speed;
}

}  // namespace zeb::cli
