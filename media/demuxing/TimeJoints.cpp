#include "media/demuxing/TimeJoints.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iterator>

namespace zeb::ffmpeg {
namespace {

// The limits that players use.
constexpr double farthestBack = 0.1;  // seconds; smaller steps are disorder in a damaged stream
constexpr double longestGap = 10;     // seconds; a shorter gap is a pause in the video

constexpr double clockRound = 0x1p33 / 90000;  // seconds after which the clock of these formats overflows

}  // namespace

bool followsInTime(double before, double after) {
    return after >= before - farthestBack && after <= before + longestGap;
}

double shiftAt(const TimeJoints& joints, std::int64_t position, double time, std::optional<double> latest) {
    const auto next =
        std::upper_bound(joints.begin(), joints.end(), position,
                         [](std::int64_t place, const TimeJoint& joint) { return place < joint.position; });
    const auto index = next - joints.begin();  // part of the file, from 0
    const auto shiftOf = [&](std::ptrdiff_t part) {
        return part == 0 ? 0 : joints[static_cast<std::size_t>(part) - 1].shift;
    };
    for (const std::ptrdiff_t part : {index, index - 1, index + 1}) {
        if (part < 0 || part > std::ssize(joints)) continue;
        if (!latest || std::abs(time + shiftOf(part) - *latest) <= longestGap) return shiftOf(part);
    }
    return shiftOf(index);
}

TimeJointFinder::Stretch::Stretch(const PlacedPacket& first)
    : position(first.position), start(first.start), end(first.end), lastDecodeTime(first.decodeTime) {}

void TimeJointFinder::Stretch::add(const PlacedPacket& packet) {
    start = std::min(start, packet.start);
    end = std::max(end, packet.end);
    lastDecodeTime = packet.decodeTime;
}

void TimeJointFinder::add(const PlacedPacket& packet) {
    Stream& stream = m_streams[packet.stream];
    if (stream.stretches.empty()) {
        stream.stretches.emplace_back(packet);
        return;
    }
    if (stream.leapt && followsInTime(stream.leapt->decodeTime, packet.decodeTime))
        stream.stretches.emplace_back(*stream.leapt);
    stream.leapt.reset();
    Stretch& stretch = stream.stretches.back();
    if (followsInTime(stretch.lastDecodeTime, packet.decodeTime)) {
        stretch.add(packet);
    } else {
        stream.leapt = packet;
    }
}

/// Returns the part of the file that begins with a stretch of sound: the part nearest in the file with
/// similar times. Returns 0 for none.
std::size_t TimeJointFinder::partOf(const Stretch& sound, const std::vector<Stretch>& parts) {
    std::size_t nearest = 0;
    for (std::size_t i = 1; i < parts.size(); ++i) {
        if (std::abs(parts[i].start - sound.start) > longestGap) continue;
        const auto distance = [&](std::size_t part) {
            return std::llabs(parts[part].position - sound.position);
        };
        if (nearest == 0 || distance(i) < distance(nearest)) nearest = i;
    }
    return nearest;
}

TimeJoints TimeJointFinder::joints() const {
    const auto video = m_streams.find(m_video);
    if (video == m_streams.end()) return {};
    std::vector<Stretch> parts = video->second.stretches;
    const std::vector<Stretch> pictures = parts;
    for (const auto& [index, stream] : m_streams) {
        if (index == m_video) continue;
        for (std::size_t i = 0; i < stream.stretches.size(); ++i) {
            const Stretch& sound = stream.stretches[i];
            const std::size_t part = i == 0 ? 0 : partOf(sound, pictures);
            if (i > 0 && part == 0) continue;  // damage in this stream only
            parts[part].position = std::min(parts[part].position, sound.position);
            parts[part].start = std::min(parts[part].start, sound.start);
            parts[part].end = std::max(parts[part].end, sound.end);
        }
    }
    TimeJoints joints;
    double shift = 0;
    for (std::size_t i = 1; i < parts.size(); ++i) {
        const double step = parts[i - 1].end - parts[i].start;
        shift += std::abs(step - clockRound) < 1 ? clockRound : step;
        joints.push_back({parts[i].position, shift});
    }
    return joints;
}

}  // namespace zeb::ffmpeg
