#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "media/Media.h"
#include "media/demuxing/TimeJoints.h"
#include "media/ffmpeg/Handles.h"
#include "platform/files/FileHandle.h"

struct AVFormatContext;

namespace zeb::ffmpeg {

/// An opened media file that packets are read from. Reads through our file handle, so that no name is
/// interpreted as a URL or a pattern and no other file is opened. Used by one thread at a time.
class Demuxer {
public:
    /// Opens and probes the file. Throws `MediaError`; its code is `cannotRead` if the file is shorter than
    /// `leastSize` bytes.
    Demuxer(const std::string& path, IsCancelled isCancelled, std::uint64_t leastSize = 0);
    /// Takes ownership of an open file; `path` is its name.
    Demuxer(std::unique_ptr<ReadableFile> file, const std::string& path, IsCancelled isCancelled,
            std::uint64_t leastSize = 0);
    ~Demuxer();
    Demuxer(const Demuxer&) = delete;
    Demuxer& operator=(const Demuxer&) = delete;

    AVFormatContext* format() const noexcept;

    /// Size of the file in bytes when it was opened.
    std::uint64_t fileSize() const noexcept;

    /// Shifts the times of later packets at the joints, so that they are continuous. `canSeek` is false from
    /// then on.
    void bridge(TimeJoints joints);

    /// Reads the next packet of any stream. Returns false at the end of the file, if the container cannot be
    /// read any further, or if the file ends within a packet. A packet without a position gets the position
    /// of the packet before it in its stream. Throws `MediaError::interrupted`, and `MediaError::cannotRead`
    /// if a read fails or the file has become shorter.
    bool read(AVPacket& packet);

    /// Returns false if times do not correspond to positions in the file.
    bool canSeek() const noexcept;

    /// Seeks to the last key frame of `stream` whose time is not after `timestamp` (in the stream's time
    /// base), or as near as the container allows; returns false on failure.
    bool seek(int stream, std::int64_t timestamp);

    /// Sets the cancellation check for later reads.
    void setCancellation(IsCancelled isCancelled);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Opens the same file again.
using OpenDemuxer = std::function<std::unique_ptr<Demuxer>()>;

}  // namespace zeb::ffmpeg
