#include "media/reading/GrabPlanner.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zeb::ffmpeg {
namespace {

// Limits of the look-ahead. Beyond them the oldest packet is decoded even if its use is undecided.
constexpr std::size_t mostPendingPackets = 600;
constexpr std::size_t mostPendingBytes = 24 * 1024 * 1024;

constexpr double forever = std::numeric_limits<double>::infinity();

}  // namespace

GrabPlanner::GrabPlanner(const GrabSchedule& schedule, double tolerance)
    : m_schedule(schedule), m_tolerance(tolerance), m_earliest(forever), m_decodedUpTo(-forever) {}

void GrabPlanner::add(const PlannedPacket& packet) {
    Pending pending{packet, !packet.isShown ? Fate::notNeeded : m_isFirst ? Fate::needed : Fate::undecided};
    m_pendingBytes += packet.size;
    if (packet.isShown) {
        m_isFirst = false;
        m_displayTimes.insert(packet.displayTime);
        m_earliest = std::min(m_earliest, packet.displayTime);
    }
    if (packet.decodeTime) m_decodedUpTo = std::max(m_decodedUpTo, *packet.decodeTime);
    m_pending.push_back(pending);
}

void GrabPlanner::end() {
    m_decodedUpTo = forever;
}

/// A picture is needed if and only if the first grab at or after it shows no later picture: every later grab
/// would show that later picture, too.
void GrabPlanner::decide(Pending& pending) const {
    if (pending.fate != Fate::undecided) return;
    const double time = pending.packet.displayTime;
    if (time <= m_earliest) {  // grabs before the first picture show it
        pending.fate = Fate::needed;
        return;
    }
    const double firstGuess = std::floor((time - m_tolerance) * static_cast<double>(m_schedule.perSecond)) -
                              static_cast<double>(m_schedule.first) - 1;
    std::int64_t grab = 0;
    if (firstGuess > 0) {
        grab = firstGuess < static_cast<double>(m_schedule.count) ? static_cast<std::int64_t>(firstGuess)
                                                                  : m_schedule.count;
    }
    while (grab < m_schedule.count && m_schedule.at(grab).seconds() + m_tolerance < time) {
        // All further grabs are at `last`.
        if (static_cast<double>(m_schedule.first + grab) >=
            m_schedule.last * static_cast<double>(m_schedule.perSecond)) {
            grab = m_schedule.count;
            break;
        }
        ++grab;
    }
    if (grab >= m_schedule.count) {
        pending.fate = Fate::notNeeded;
        return;
    }
    const double limit = m_schedule.at(grab).seconds() + m_tolerance;
    const auto next = m_displayTimes.upper_bound(time);
    if (next != m_displayTimes.end() && *next <= limit) {
        pending.fate = Fate::notNeeded;
    } else if (m_decodedUpTo > limit) {
        pending.fate = Fate::needed;
    }
}

bool GrabPlanner::isFull() const {
    return m_pending.size() >= mostPendingPackets || m_pendingBytes >= mostPendingBytes;
}

bool GrabPlanner::isReady() {
    if (m_pending.empty()) return false;
    decide(m_pending.front());
    if (m_pending.front().fate == Fate::needed || isFull() || m_decodedUpTo == forever) return true;
    if (m_pending.front().fate == Fate::undecided) return false;
    // The packet can be dropped if no later packet of its group is needed: look ahead until that is decided.
    for (auto later = m_pending.begin() + 1; later != m_pending.end(); ++later) {
        if (later->packet.startsGroup) return true;
        decide(*later);
        if (later->fate != Fate::notNeeded) return later->fate == Fate::needed;
    }
    return false;
}

PacketUse GrabPlanner::take() {
    const Pending front = m_pending.front();
    m_pending.pop_front();
    m_pendingBytes -= front.packet.size;
    if (front.packet.decodeTime) {
        m_displayTimes.erase(m_displayTimes.begin(), m_displayTimes.lower_bound(*front.packet.decodeTime));
    }
    if (front.fate != Fate::notNeeded) return PacketUse::decode;
    for (Pending& later : m_pending) {
        if (later.packet.startsGroup) return PacketUse::drop;
        decide(later);
        if (later.fate != Fate::notNeeded) return PacketUse::decodeIfReference;
    }
    return m_decodedUpTo == forever ? PacketUse::drop : PacketUse::decodeIfReference;
}

}  // namespace zeb::ffmpeg
