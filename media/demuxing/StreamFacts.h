#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "media/Media.h"
#include "media/demuxing/Demuxer.h"

struct AVStream;

namespace zeb::ffmpeg {

/// Transforms a decoded picture to be upright: first mirrored (left and right exchanged) if set, then rotated
/// clockwise by quarter turns.
struct Orientation {
    bool mirrored = false;
    int quarterTurns = 0;  ///< 0 ... 3, clockwise

    bool exchangesSides() const { return quarterTurns % 2 != 0; }
    bool operator==(const Orientation&) const = default;
};

/// A rational number of the libraries: seconds per tick or a plain ratio.
struct Ratio {
    int numerator = 0;
    int denominator = 1;

    double value() const { return denominator == 0 ? 0 : static_cast<double>(numerator) / denominator; }
};

/// Facts about a video stream from the container and its first packets.
struct VideoStreamFacts {
    int stream = -1;            ///< index within the container
    Ratio timeBase;             ///< seconds per tick of its timestamps
    bool hasTimestamps = true;  ///< false: raw stream; pictures follow each other at `frameRate`
    double frameRate = 0;       ///< pictures per second, average; 0 when unknown
    Ratio sampleAspect{1, 1};   ///< width to height of a sample
    Orientation orientation;
    int codedWidth = 0;
    int codedHeight = 0;
    TrackEnd end;

    /// Display duration of a picture in seconds, used if no better value is known.
    double frameDuration() const { return 1.0 / (frameRate > 0 ? frameRate : 25.0); }
};

struct SoundStreamFacts {
    int stream = -1;
    Ratio timeBase;
    SoundTrack track;
};

/// The tracks of a container in their order of preference, and the start of its presentation.
struct ContainerFacts {
    std::vector<VideoStreamFacts> videos;  ///< the container's default track first; no cover art
    std::vector<SoundStreamFacts> sounds;
    double origin = 0;  ///< presentation time 0 on the container's clock, in seconds
    TimeJoints joints;  ///< places where that clock restarts
};

ContainerFacts containerFacts(const Demuxer& demuxer);

/// Returns the track for the public interface.
VideoTrack videoTrack(const VideoStreamFacts& facts);

}  // namespace zeb::ffmpeg
