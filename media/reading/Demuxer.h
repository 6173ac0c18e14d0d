#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "media/Media.h"
#include "media/ffmpeg/Handles.h"
#include "media/reading/TimeJoints.h"
#include "platform/files/FileHandle.h"

struct AVFormatContext;

namespace zeb::ffmpeg {

/// An opened media file that packets are read from. Reads through a file handle of our own, so that no name
/// is ever taken for an address or a pattern and nothing else is opened. Used by one thread at a time.
class Demuxer {
public:
    /// Opens and probes the file. Throws `MediaError`: `cannotRead` when it has become shorter than
    /// `leastSize` bytes.
    Demuxer(const std::string& path, IsCancelled isCancelled, std::uint64_t leastSize = 0);
    /// The same for a file that is handed over; `path` only names it.
    Demuxer(std::unique_ptr<ReadableFile> file, const std::string& path, IsCancelled isCancelled,
            std::uint64_t leastSize = 0);
    ~Demuxer();
    Demuxer(const Demuxer&) = delete;
    Demuxer& operator=(const Demuxer&) = delete;

    AVFormatContext* format() const noexcept;

    /// Size of the file in bytes as it was opened.
    std::uint64_t fileSize() const noexcept;

    /// Makes the times of packets go on where they begin again. Ends `canSeek`.
    void bridge(TimeJoints joints);

    /// Reads the next packet of any stream; false at the end, which is also where the container leads no
    /// further or the file ends within a packet. A packet without a position has that of the one before it
    /// in its stream. Throws `MediaError::interrupted` and, when the system fails to read or the file has
    /// become shorter, `MediaError::cannotRead`.
    bool read(AVPacket& packet);

    /// False where times do not lead to places in the file.
    bool canSeek() const noexcept;

    /// Moves to the last key frame of `stream` whose time is not after `timestamp` (in the stream's time
    /// base), or as near as the container allows; false when it cannot.
    bool seek(int stream, std::int64_t timestamp);

    /// Who is asked from now on whether reading shall stop.
    void setCancellation(IsCancelled isCancelled);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Opens the same file once more.
using OpenDemuxer = std::function<std::unique_ptr<Demuxer>()>;

}  // namespace zeb::ffmpeg
