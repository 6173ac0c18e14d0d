#include "media/writing/Muxer.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <new>
#include <utility>

#include "media/FilmWriter.h"
#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

constexpr int ioBufferSize = 256 * 1024;

}  // namespace

struct Muxer::State {
    WritableFile& file;
    std::uint64_t position = 0;
    std::uint64_t end = 0;
    std::exception_ptr failure;  ///< first failure of the file; must not pass through the library
    AVIOContext* io = nullptr;
    AVFormatContext* format = nullptr;
    bool isOpen = false;        ///< the header is written, the trailer is not
    bool isDiscarding = false;  ///< writes to the file are dropped

    explicit State(WritableFile& target) : file(target) {}
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    ~State() {
        if (isOpen) {
            // Only writing the trailer frees the packets queued in the library and in some muxers.
            isDiscarding = true;
            io->error = 0;
            av_write_trailer(format);
        }
        avformat_free_context(format);
        if (io != nullptr) {
            av_freep(&io->buffer);
            avio_context_free(&io);
        }
    }

    static int write(void* opaque, std::uint8_t* bytes, int count) noexcept {
        State& state = *static_cast<State*>(opaque);
        if (state.isDiscarding) return count;
        if (state.failure) return AVERROR(EIO);
        try {
            state.file.write({bytes, static_cast<std::size_t>(count)});
        } catch (...) {
            state.failure = std::current_exception();
            return AVERROR(EIO);
        }
        state.position += static_cast<std::uint64_t>(count);
        state.end = std::max(state.end, state.position);
        return count;
    }

    static std::int64_t seek(void* opaque, std::int64_t offset, int whence) noexcept {
        State& state = *static_cast<State*>(opaque);
        switch (whence & ~AVSEEK_FORCE) {
            case AVSEEK_SIZE:
                return static_cast<std::int64_t>(state.end);
            case SEEK_SET:
                break;
            case SEEK_CUR:
                offset += static_cast<std::int64_t>(state.position);
                break;
            case SEEK_END:
                offset += static_cast<std::int64_t>(state.end);
                break;
            default:
                return AVERROR(EINVAL);
        }
        if (offset < 0) return AVERROR(EINVAL);
        if (state.isDiscarding) return offset;
        try {
            state.file.seek(static_cast<std::uint64_t>(offset));
        } catch (...) {
            if (!state.failure) state.failure = std::current_exception();
            return AVERROR(EIO);
        }
        state.position = static_cast<std::uint64_t>(offset);
        return offset;
    }

    /// Throws the file's failure if there is one, else the library's.
    void require(int result) const {
        if (failure) std::rethrow_exception(failure);
        if (result < 0)
            throw FilmError(FilmError::cannotEncode,
                            {"error_film_cannot_write_format", {format->oformat->name}});
    }
};

Muxer::Muxer(WritableFile& file, const char* format) : m_state(std::make_unique<State>(file)) {
    State& state = *m_state;
    if (avformat_alloc_output_context2(&state.format, nullptr, format, nullptr) < 0) {
        throw FilmError(FilmError::noEncoder, {"error_film_no_muxer_format", {format}});
    }
    auto* buffer = static_cast<std::uint8_t*>(av_malloc(ioBufferSize));
    if (buffer == nullptr) throw std::bad_alloc();
    state.io = avio_alloc_context(buffer, ioBufferSize, 1, &state, nullptr, &State::write, &State::seek);
    if (state.io == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }
    state.format->pb = state.io;
    state.format->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
    // Disable the interleaving limit: at one picture per second the encoder's look-ahead exceeds it, and
    // sound would be written too early.
    state.format->max_interleave_delta = 0;
}

Muxer::~Muxer() = default;

int Muxer::encoderFlags() const {
    const bool wantsGlobalHeader = (m_state->format->oformat->flags & AVFMT_GLOBALHEADER) != 0;
    return wantsGlobalHeader ? AV_CODEC_FLAG_GLOBAL_HEADER : 0;
}

AVStream& Muxer::addStream(const AVCodecContext& encoder) {
    AVStream* stream = avformat_new_stream(m_state->format, nullptr);
    if (stream == nullptr || avcodec_parameters_from_context(stream->codecpar, &encoder) < 0)
        throw std::bad_alloc();
    stream->time_base = encoder.time_base;
    if (encoder.codec_type == AVMEDIA_TYPE_VIDEO) {
        stream->avg_frame_rate = encoder.framerate;
        stream->r_frame_rate = encoder.framerate;
    }
    return *stream;
}

void Muxer::start(const char* options) {
    AVDictionary* dictionary = nullptr;
    int result = av_dict_parse_string(&dictionary, options, "=", ":", 0);
    if (result >= 0) result = avformat_write_header(m_state->format, &dictionary);
    av_dict_free(&dictionary);
    m_state->isOpen = result >= 0;
    m_state->require(result);
}

void Muxer::write(AVPacket& packet, const AVCodecContext& encoder, const AVStream& stream) {
    av_packet_rescale_ts(&packet, encoder.time_base, stream.time_base);
    packet.stream_index = stream.index;
    m_state->require(av_interleaved_write_frame(m_state->format, &packet));
}

void Muxer::finish() {
    m_state->isOpen = false;
    m_state->require(av_write_trailer(m_state->format));
    avio_flush(m_state->io);
    m_state->require(m_state->io->error);
}

std::uint64_t Muxer::bytesWritten() const noexcept {
    return m_state->end;
}

}  // namespace zeb::ffmpeg
