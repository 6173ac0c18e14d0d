#pragma once

#include <cstdint>
#include <memory>

#include "media/ffmpeg/Handles.h"
#include "platform/files/FileHandle.h"

struct AVStream;

namespace zeb::ffmpeg {

/// Writes packets of several streams as a video file through our file handle. Throws `FilmError`, and the
/// file's errors.
class Muxer {
public:
    /// `format` is a muxer's short name. `file` must outlive the muxer.
    Muxer(WritableFile& file, const char* format);
    ~Muxer();
    Muxer(const Muxer&) = delete;
    Muxer& operator=(const Muxer&) = delete;

    /// Flags that the format requires of its encoders; set them before the encoder is opened.
    int encoderFlags() const;
    /// Adds a stream for the output of an opened encoder. Call before `start`.
    AVStream& addStream(const AVCodecContext& encoder);
    /// Writes the header of the file. `options` are the muxer's, a dictionary as text ("loop=0:...").
    void start(const char* options);
    /// Writes a packet and takes over its contents.
    void write(AVPacket& packet, const AVCodecContext& encoder, const AVStream& stream);
    void finish();

    std::uint64_t bytesWritten() const noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace zeb::ffmpeg
