#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace zeb::ffmpeg {

/// A place in a file where timestamps restart, for example between concatenated recordings.
struct TimeJoint {
    std::int64_t position = 0;  ///< offset in bytes of the first packet with restarted times
    double shift = 0;           ///< seconds to add to the times of all packets from there to the next joint
};

/// In ascending order of position.
using TimeJoints = std::vector<TimeJoint>;

/// Returns true if two times are near enough to be continuous. The limits are those of players.
bool followsInTime(double before, double after);

/// Returns the seconds to add to the times of a stream's packet at `position`. `time` is the packet's
/// unshifted time, `latest` the shifted time of the stream's packet before it. Near a joint, streams change
/// to the new times at different positions: if the shift at the position does not fit, the neighbouring
/// joints' shifts are tried.
double shiftAt(const TimeJoints& joints, std::int64_t position, double time, std::optional<double> latest);

/// A packet with its position in the file. Times in seconds of the container's clock.
struct PlacedPacket {
    int stream = -1;
    std::int64_t position = 0;
    double decodeTime = 0;
    double start = 0;  ///< presentation time
    double end = 0;
};

/// Finds the joints of a file from all its packets. A joint is where the decoding time of the pictures falls
/// back or leaps and the next picture continues from there. A single stray time is no joint. A pure
/// computation.
class TimeJointFinder {
public:
    /// `video` is the stream whose times determine the joints.
    explicit TimeJointFinder(int video) : m_video(video) {}

    /// Adds the next packet. Packets of one stream must come in the order of the file.
    void add(const PlacedPacket& packet);

    /// Returns the joints. The part after a joint starts when all pictures and sound before it have ended.
    TimeJoints joints() const;

private:
    /// Packets of a stream whose times follow one another.
    struct Stretch {
        std::int64_t position = 0;
        double start = 0;
        double end = 0;
        double lastDecodeTime = 0;

        explicit Stretch(const PlacedPacket& first);
        void add(const PlacedPacket& packet);
    };
    struct Stream {
        std::vector<Stretch> stretches{};
        std::optional<PlacedPacket> leapt{};  ///< the latest packet, if its time does not follow on
    };

    static std::size_t partOf(const Stretch& sound, const std::vector<Stretch>& parts);

    int m_video;
    std::map<int, Stream> m_streams;
};

}  // namespace zeb::ffmpeg
