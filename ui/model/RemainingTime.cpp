#include "ui/model/RemainingTime.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "platform/text/NumberText.h"

namespace zeb {

void RemainingTime::reset() {
    *this = {};
}

void RemainingTime::updateETA(double progress, Clock::Instant now) {
    const double clamped = std::clamp(progress, 0.0, 1.0);
    if (!m_lastSampleAt) {
        m_lastSampleAt = now;
        m_lastSampleProgress = clamped;
        m_etaText = unknownText;
        return;
    }
    takeSample(clamped, now);
    m_etaText = text(clamped);
}

void RemainingTime::takeSample(double progress, Clock::Instant now) {
    const double time = std::chrono::duration<double>(now - *m_lastSampleAt).count();
    const double advance = progress - m_lastSampleProgress;
    if (!(time > 0.25 && advance >= 0)) return;
    const double speed = advance / time;
    if (std::isfinite(speed) && speed > 0)
        m_emaSpeed = m_emaSpeed == 0 ? speed : m_emaSpeed * 0.8 + speed * 0.2;
    m_lastSampleAt = now;
    m_lastSampleProgress = progress;
}

std::string RemainingTime::text(double progress) const {
    if (progress <= 0 || m_emaSpeed <= 0) return unknownText;
    if (progress >= 1) return "0:00";
    return formatDuration((1 - progress) / m_emaSpeed);
}

}  // namespace zeb
