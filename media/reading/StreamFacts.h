#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "media/Media.h"
#include "media/reading/Demuxer.h"

struct AVStream;

namespace zeb::ffmpeg {

/// How a decoded picture is turned to stand upright: mirrored first (left and right exchanged) where asked
/// for, then turned clockwise by quarter turns.
struct Orientation {
    bool mirrored = false;
    int quarterTurns = 0;  ///< 0 ... 3, clockwise

    bool exchangesSides() const { return quarterTurns % 2 != 0; }
    bool operator==(const Orientation&) const = default;
};

/// One rational number of the libraries, as seconds per tick or as a plain ratio.
struct Ratio {
    int numerator = 0;
    int denominator = 1;

    double value() const { return denominator == 0 ? 0 : static_cast<double>(numerator) / denominator; }
};

/// What the container and the probing of its first packets tell about a video stream.
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

    /// Display duration of a picture where nothing better is known, in seconds.
    double frameDuration() const { return 1.0 / (frameRate > 0 ? frameRate : 25.0); }
};

struct SoundStreamFacts {
    int stream = -1;
    Ratio timeBase;
    SoundTrack track;
};

/// The tracks of a container, in the order in which they count, and where its presentation starts.
struct ContainerFacts {
    std::vector<VideoStreamFacts> videos;  ///< the container's default one first; no cover art
    std::vector<SoundStreamFacts> sounds;
    double origin = 0;  ///< presentation time 0 in seconds of the container's clock
    TimeJoints joints;  ///< where that clock starts again
};

ContainerFacts containerFacts(const Demuxer& demuxer);

/// The track as the rest of the system sees it.
VideoTrack videoTrack(const VideoStreamFacts& facts);

}  // namespace zeb::ffmpeg
