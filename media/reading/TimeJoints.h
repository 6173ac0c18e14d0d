#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace zeb::ffmpeg {

/// A place in a file from which on its times count anew, as where recordings were put together.
struct TimeJoint {
    std::int64_t position = 0;  ///< byte at which the first packet with such times starts
    double shift = 0;           ///< seconds to add to the times of all packets from there to the next joint
};

/// In ascending order of position.
using TimeJoints = std::vector<TimeJoint>;

/// Whether times so far apart belong to one run of a clock, by the bounds that players use.
bool followsInTime(double before, double after);

/// The seconds to add to the times of a stream's packet at `position`, whose own time is `time`, where
/// `latest` is the moved time of the packet before it. About a joint streams change to the new times one
/// after the other: the neighbouring joints' shifts are tried where that at the position does not fit.
double shiftAt(const TimeJoints& joints, std::int64_t position, double time, std::optional<double> latest);

/// A packet as it stands in the file, times in seconds of the container's clock.
struct PlacedPacket {
    int stream = -1;
    std::int64_t position = 0;
    double decodeTime = 0;
    double start = 0;  ///< presentation
    double end = 0;
};

/// Finds the joints of a file from all its packets. The pictures tell where times begin again: where the
/// decoding time falls back or leaps, and goes on from there with the next picture. A single stray time is no
/// joint. Plain computation.
class TimeJointFinder {
public:
    /// `video`: the stream whose times tell.
    explicit TimeJointFinder(int video) : m_video(video) {}

    /// Adds the next packet; those of one stream come in the order of the file.
    void add(const PlacedPacket& packet);

    /// The joints: what follows one starts where all that precedes it, pictures and sound, has ended.
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
        std::optional<PlacedPacket> leapt{};  ///< the latest packet, where it does not follow the one before
    };

    static std::size_t partOf(const Stretch& sound, const std::vector<Stretch>& parts);

    int m_video;
    std::map<int, Stream> m_streams;
};

}  // namespace zeb::ffmpeg
