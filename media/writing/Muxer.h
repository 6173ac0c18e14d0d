#pragma once

#include <cstdint>
#include <memory>

#include "media/ffmpeg/Handles.h"
#include "platform/files/FileHandle.h"

struct AVStream;

namespace zeb::ffmpeg {

/// A film file being written: packets of its streams go in, bytes go to a file handle of our own. Throws
/// `FilmError`, and the file's own errors.
class Muxer {
public:
    /// `format` is a muxer's short name. `file` must outlive the muxer.
    Muxer(WritableFile& file, const char* format);
    ~Muxer();
    Muxer(const Muxer&) = delete;
    Muxer& operator=(const Muxer&) = delete;

    /// The encoder's flags that the format asks for; to be set before the encoder is opened.
    int encoderFlags() const;
    /// A stream for what an opened encoder makes; before `start`.
    AVStream& addStream(const AVCodecContext& encoder);
    /// Writes the head of the file. `options`, a dictionary as text ("loop=0:..."), are the muxer's own.
    void start(const char* options);
    /// Takes the packet's contents.
    void write(AVPacket& packet, const AVCodecContext& encoder, const AVStream& stream);
    void finish();

    std::uint64_t bytesWritten() const noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace zeb::ffmpeg
