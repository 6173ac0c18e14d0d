#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>

#include "media/Media.h"

namespace zeb::ffmpeg {

/// What a decoder shall do with a packet.
enum class PacketUse {
    decode,             ///< a grab shows its picture
    decodeIfReference,  ///< no grab shows it, but other pictures may be predicted from it
    drop,               ///< nothing that a grab shows depends on it
};

/// A packet as planning sees it. Times in seconds from presentation time 0.
struct PlannedPacket {
    double displayTime = 0;
    std::optional<double> decodeTime;  ///< no later packet is displayed before this
    bool startsGroup = false;          ///< neither this nor any later packet depends on an earlier one
    bool isShown = true;               ///< false: only there for other pictures to be predicted from
    std::size_t size = 0;              ///< bytes
};

/// Tells which packets a schedule of grabs needs, from a look ahead over the packets' times. Plain
/// computation: the answers depend on the sequence of packets only. The first packets are always needed, for
/// grabs before the first picture.
class GrabPlanner {
public:
    /// A picture whose time is at most `tolerance` seconds after a grab's counts as not after it.
    GrabPlanner(const GrabSchedule& schedule, double tolerance);

    /// Adds the next packet in decoding order.
    void add(const PlannedPacket& packet);
    /// No more packets follow.
    void end();

    /// Whether the fate of the oldest packet is known; if not, `add` more. Always after `end`.
    bool isReady();
    /// The fate of the oldest packet, which is thereby taken out. Only when `isReady`.
    PacketUse take();

private:
    enum class Fate { undecided, needed, notNeeded };

    struct Pending {
        PlannedPacket packet;
        Fate fate = Fate::undecided;
    };

    void decide(Pending& pending) const;
    bool isFull() const;

    GrabSchedule m_schedule;
    double m_tolerance;
    std::deque<Pending> m_pending;
    std::multiset<double> m_displayTimes;  ///< of the pending packets and those just before them
    double m_earliest;                     ///< display time of the first picture known so far
    double m_decodedUpTo;                  ///< no packet yet to come is displayed before this
    std::size_t m_pendingBytes = 0;
    bool m_isFirst = true;
};

}  // namespace zeb::ffmpeg
