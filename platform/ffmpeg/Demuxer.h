#pragma once

#include <memory>
#include <string>

#include "platform/Media.h"
#include "platform/ffmpeg/Handles.h"

struct AVFormatContext;

namespace zeb::ffmpeg {

/// An opened media file that packets are read from. Reads through a file handle of our own, so that no name
/// is ever taken for an address or a pattern and nothing else is opened. Used by one thread at a time.
class Demuxer {
public:
    /// Opens and probes the file. Throws `MediaError`.
    Demuxer(const std::string& path, IsCancelled isCancelled);
    ~Demuxer();
    Demuxer(const Demuxer&) = delete;
    Demuxer& operator=(const Demuxer&) = delete;

    AVFormatContext* format() const noexcept;

    /// Size of the file in bytes as it was opened.
    std::uint64_t fileSize() const noexcept;

    /// Reads the next packet of any stream; false at the end (a read error in the middle counts as the end:
    /// what was readable is used). Throws `MediaError::interrupted`.
    bool read(AVPacket& packet);

    /// Moves to the last key frame of `stream` whose time is not after `timestamp` (in the stream's time
    /// base), or as near as the container allows; false when it cannot.
    bool seek(int stream, std::int64_t timestamp);

    /// Who is asked from now on whether reading shall stop.
    void setCancellation(IsCancelled isCancelled);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace zeb::ffmpeg
