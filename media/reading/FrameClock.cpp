#include "media/reading/FrameClock.h"

#include <algorithm>

namespace zeb::ffmpeg {

double FrameClock::seconds(std::int64_t timestamp) const {
    return static_cast<double>(timestamp) * m_facts.timeBase.value() - m_origin;
}

double FrameClock::countedTime(std::int64_t number) const {
    return static_cast<double>(number) * m_facts.frameDuration();
}

void FrameClock::takePacket(const AVPacket& packet) {
    if (m_timing) return;
    if (!m_facts.hasTimestamps || (packet.pts == AV_NOPTS_VALUE && packet.dts == AV_NOPTS_VALUE)) {
        m_timing = Timing::byCounting;
    } else {
        m_timing = packet.pts == AV_NOPTS_VALUE ? Timing::byDecoding : Timing::byPresentation;
    }
}

void FrameClock::sent(std::int64_t decodingTime, std::size_t most) {
    m_decodingTimes.push(decodingTime);
    while (m_decodingTimes.size() > most)
        m_decodingTimes.pop();
}

double FrameClock::timeOf(const AVFrame& frame, bool startsGroup) {
    const double time = streamTime(frame, startsGroup);
    // If a damaged stream contains an earlier time, the picture takes that of the picture before.
    m_lastTime = m_lastTime ? std::max(time, *m_lastTime) : time;
    return *m_lastTime;
}

double FrameClock::streamTime(const AVFrame& frame, bool startsGroup) {
    const double following = m_lastTime ? *m_lastTime + m_facts.frameDuration() : 0;
    switch (m_timing.value_or(Timing::byPresentation)) {
        case Timing::byCounting:
            return countedTime(m_counted++);
        case Timing::byDecoding: {
            // Discard decoding times older than this key frame: their pictures were lost.
            while (startsGroup && !m_decodingTimes.empty() && m_decodingTimes.top() < frame.pts)
                m_decodingTimes.pop();
            if (m_decodingTimes.empty()) return following;
            const std::int64_t time = m_decodingTimes.top();
            m_decodingTimes.pop();
            return seconds(time);
        }
        case Timing::byPresentation:
            break;
    }
    const std::int64_t time = frame.pts != AV_NOPTS_VALUE ? frame.pts : frame.best_effort_timestamp;
    return time == AV_NOPTS_VALUE ? following : seconds(time);
}

void FrameClock::reset() {
    m_counted = 0;
    m_decodingTimes = {};
    m_lastTime.reset();
}

}  // namespace zeb::ffmpeg
