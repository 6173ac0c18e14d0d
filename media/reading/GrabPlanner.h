#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>

#include "media/Media.h"

namespace zeb::ffmpeg {

/// How the decoder must treat a packet.
enum class PacketUse {
    decode,             ///< a grab shows its picture
    decodeIfReference,  ///< no grab shows it, but other pictures may be predicted from it
    drop,               ///< no grabbed picture depends on it
};

/// The properties of a packet that planning uses. Times in seconds from presentation time 0.
struct PlannedPacket {
    double displayTime = 0;
    std::optional<double> decodeTime;  ///< no later packet is displayed before this
    bool startsGroup = false;          ///< neither this nor any later packet depends on an earlier one
    bool isShown = true;               ///< false: the picture is only a reference for other pictures
    std::size_t size = 0;              ///< bytes
};

/// Determines the packets that a schedule of grabs needs, by looking ahead over the packets' times. A pure
/// computation: the results depend on the sequence of packets only. The first packets are always needed, for
/// grabs before the first picture.
class GrabPlanner {
public:
    /// A picture up to `tolerance` seconds after a grab counts as not after it.
    GrabPlanner(const GrabSchedule& schedule, double tolerance);

    /// Adds the next packet in decoding order.
    void add(const PlannedPacket& packet);
    /// Marks the end of the packets.
    void end();

    /// Returns true if the use of the oldest packet is decided; if not, `add` more. Always true after `end`.
    bool isReady();
    /// Removes the oldest packet and returns its use. Requires `isReady`.
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
    std::multiset<double> m_displayTimes;  ///< of the pending packets and the packets just before them
    double m_earliest;                     ///< display time of the first picture known so far
    double m_decodedUpTo;                  ///< no later packet is displayed before this time
    std::size_t m_pendingBytes = 0;
    bool m_isFirst = true;
};

}  // namespace zeb::ffmpeg
