#include "media/demuxing/Demuxer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "media/ffmpeg/Libraries.h"
#include "platform/files/FileHandle.h"
#include "platform/text/SystemErrorText.h"

namespace zeb::ffmpeg {
namespace {

constexpr int ioBufferSize = 64 * 1024;

/// Formats that refer to other files or addresses, or that render any text as a picture.
constexpr std::array refusedFormats = {
    "concat",      "dash",       "hls",  "imf",    "image2",
    "image2pipe",  "ffmetadata", "rtsp", "sdp",    "webm_dash_manifest",
    "tty",         "bin",        "xbin", "adf",    "idf",
    "tedcaptions", "lavfi",      "rtp",  "mpjpeg", "vapoursynth",
    "vobsub",
};

bool isRefused(const AVInputFormat& format) {
    // A name is a comma-separated list of aliases.
    std::string_view names = format.name;
    while (!names.empty()) {
        const std::size_t comma = names.find(',');
        const std::string_view name = names.substr(0, comma);
        if (std::find(refusedFormats.begin(), refusedFormats.end(), name) != refusedFormats.end())
            return true;
        if (name.ends_with("_pipe")) return true;  // sequences of single pictures
        names = comma == std::string_view::npos ? std::string_view() : names.substr(comma + 1);
    }
    return (format.flags & AVFMT_NOFILE) != 0;
}

KeyedText textOf(int error) {
    if (error == AVERROR_INVALIDDATA || error == AVERROR_EOF || error == AVERROR_DEMUXER_NOT_FOUND)
        return {"error_media_not_a_video"};
    // Error codes are negated system error numbers, or large numbers composed of letters.
    constexpr int largestErrorNumber = 4095;
    if (AVUNERROR(error) > 0 && AVUNERROR(error) <= largestErrorNumber)
        return systemErrorText(AVUNERROR(error));
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return {"error_media_library_format", {text.data()}};
}

/// Returns a file name that keeps only the extension, which helps to recognise a format. The rest of the name
/// could be taken for a pattern.
std::string nameForProbing(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t dot = path.rfind('.');
    const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash + 1);
    std::string extension = hasExtension ? path.substr(dot + 1) : std::string();
    const bool isPlain = std::all_of(extension.begin(), extension.end(), [](unsigned char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    });
    return isPlain && !extension.empty() ? "movie." + extension : "movie";
}

KeyedText becameShorter() {
    return {"error_media_became_shorter"};
}

std::unique_ptr<ReadableFile> openFile(const std::string& path) {
    try {
        return openForReading(path);
    } catch (const FileError& error) {
        throw MediaError(MediaError::cannotOpen, error.reasonText());
    }
}

int refuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EPERM);
}

}  // namespace

struct Demuxer::State {
    std::unique_ptr<ReadableFile> file;
    std::uint64_t position = 0;
    std::uint64_t size = 0;
    IsCancelled isCancelled;
    std::optional<KeyedText> failure;                ///< reason why reading failed
    TimeJoints joints;                               ///< joints to bridge
    std::vector<std::int64_t> latestPositions;       ///< by stream: position of its latest packet
    std::vector<std::optional<double>> latestTimes;  ///< by stream: shifted time of its latest packet
    AVIOContext* io = nullptr;
    AVFormatContext* format = nullptr;

    ~State() {
        if (format != nullptr) avformat_close_input(&format);
        if (io != nullptr) {
            av_freep(&io->buffer);
            avio_context_free(&io);
        }
    }

    static int read(void* opaque, std::uint8_t* buffer, int size) noexcept {
        State& state = *static_cast<State*>(opaque);
        // Probing some formats searches the whole file within one library call.
        if (wantsToStop(opaque) != 0) return AVERROR_EXIT;
        try {
            const std::size_t count =
                state.file->readAt(state.position, {buffer, static_cast<std::size_t>(size)});
            // After a read error the libraries search on and often report the end of the file, so store the
            // failure.
            if (count == 0 && size > 0 && state.position < state.size) state.failure = becameShorter();
            state.position += count;
            return count == 0 ? AVERROR_EOF : static_cast<int>(count);
        } catch (const FileError& error) {
            state.failure = error.reasonText();
            return AVERROR(error.code());
        }
    }

    static std::int64_t seek(void* opaque, std::int64_t offset, int whence) noexcept {
        State& state = *static_cast<State*>(opaque);
        switch (whence & ~AVSEEK_FORCE) {
            case AVSEEK_SIZE:
                return static_cast<std::int64_t>(state.size);
            case SEEK_SET:
                break;
            case SEEK_CUR:
                offset += static_cast<std::int64_t>(state.position);
                break;
            case SEEK_END:
                offset += static_cast<std::int64_t>(state.size);
                break;
            default:
                return AVERROR(EINVAL);
        }
        if (offset < 0) return AVERROR(EINVAL);
        state.position = static_cast<std::uint64_t>(offset);
        return offset;
    }

    /// Returns true if the file ends within the packet. Streams without an index mark packets as corrupt for
    /// other reasons, too.
    bool isTorn(const AVPacket& packet) const {
        return (packet.flags & AV_PKT_FLAG_CORRUPT) != 0 && io->eof_reached != 0 &&
               (format->iformat->flags & AVFMT_TS_DISCONT) == 0;
    }

    /// Sets a missing position of the packet and shifts its times.
    void place(AVPacket& packet) {
        const auto stream = static_cast<std::size_t>(packet.stream_index);
        if (latestPositions.size() <= stream) {
            latestPositions.resize(stream + 1, 0);
            latestTimes.resize(stream + 1);
        }
        if (packet.pos < 0) packet.pos = latestPositions[stream];
        latestPositions[stream] = packet.pos;
        const std::int64_t stamp = packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts;
        if (joints.empty() || stamp == AV_NOPTS_VALUE) return;
        const double tick = av_q2d(format->streams[stream]->time_base);
        const double time = static_cast<double>(stamp) * tick;
        const double seconds = shiftAt(joints, packet.pos, time, latestTimes[stream]);
        latestTimes[stream] = time + seconds;
        const std::int64_t shift = std::llround(seconds / tick);
        if (packet.pts != AV_NOPTS_VALUE) packet.pts += shift;
        if (packet.dts != AV_NOPTS_VALUE) packet.dts += shift;
    }

    static int wantsToStop(void* opaque) noexcept {
        const State& state = *static_cast<const State*>(opaque);
        return state.isCancelled && state.isCancelled() ? 1 : 0;
    }

    void throwIfCancelled() const {
        if (isCancelled && isCancelled()) throw MediaError::wasInterrupted();
    }

    void throwIfFailed() const {
        if (failure) throw MediaError(MediaError::cannotRead, *failure);
    }

    void throwCannotOpen(int error) const {
        throwIfCancelled();
        throwIfFailed();
        throw MediaError(MediaError::cannotOpen, textOf(error));
    }
};

Demuxer::Demuxer(const std::string& path, IsCancelled isCancelled, std::uint64_t leastSize)
    : Demuxer(openFile(path), path, std::move(isCancelled), leastSize) {}

Demuxer::Demuxer(std::unique_ptr<ReadableFile> file, const std::string& path, IsCancelled isCancelled,
                 std::uint64_t leastSize)
    : m_state(std::make_unique<State>()) {
    State& state = *m_state;
    state.isCancelled = std::move(isCancelled);
    state.file = std::move(file);
    try {
        state.size = state.file->size();
    } catch (const FileError& error) {
        throw MediaError(MediaError::cannotOpen, error.reasonText());
    }
    if (state.size < leastSize) throw MediaError(MediaError::cannotRead, becameShorter());
    if (state.size == 0) throw MediaError(MediaError::cannotOpen, {"error_media_empty_file"});

    auto* buffer = static_cast<std::uint8_t*>(av_malloc(ioBufferSize));
    if (buffer == nullptr) throw std::bad_alloc();
    state.io = avio_alloc_context(buffer, ioBufferSize, 0, &state, &State::read, nullptr, &State::seek);
    if (state.io == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }

    const std::string name = nameForProbing(path);
    const AVInputFormat* inputFormat = nullptr;
    if (const int error = av_probe_input_buffer2(state.io, &inputFormat, name.c_str(), nullptr, 0, 0);
        error < 0) {
        state.throwCannotOpen(error);
    }
    if (isRefused(*inputFormat)) {
        throw MediaError(MediaError::cannotOpen, {"error_media_refused_format", {inputFormat->name}});
    }

    state.format = avformat_alloc_context();
    if (state.format == nullptr) throw std::bad_alloc();
    state.format->pb = state.io;
    state.format->flags |= AVFMT_FLAG_CUSTOM_IO;
    state.format->io_open = &refuseToOpen;
    state.format->interrupt_callback = {&State::wantsToStop, &state};
    if (const int error = avformat_open_input(&state.format, name.c_str(), inputFormat, nullptr); error < 0) {
        state.throwCannotOpen(error);
    }
    if (const int error = avformat_find_stream_info(state.format, nullptr); error < 0)
        state.throwCannotOpen(error);
    state.throwIfCancelled();
    state.throwIfFailed();
}

Demuxer::~Demuxer() = default;

AVFormatContext* Demuxer::format() const noexcept {
    return m_state->format;
}

std::uint64_t Demuxer::fileSize() const noexcept {
    return m_state->size;
}

bool Demuxer::read(AVPacket& packet) {
    for (;;) {
        m_state->throwIfCancelled();
        const int result = av_read_frame(m_state->format, &packet);
        if (m_state->failure) {
            av_packet_unref(&packet);
            m_state->throwIfFailed();
        }
        if (result >= 0) {
            if (m_state->isTorn(packet)) {
                av_packet_unref(&packet);
                return false;
            }
            m_state->place(packet);
            return true;
        }
        if (result == AVERROR(EAGAIN)) continue;
        m_state->throwIfCancelled();
        return false;
    }
}

void Demuxer::bridge(TimeJoints joints) {
    m_state->joints = std::move(joints);
}

bool Demuxer::canSeek() const noexcept {
    return m_state->joints.empty();
}

bool Demuxer::seek(int stream, std::int64_t timestamp) {
    return canSeek() && avformat_seek_file(m_state->format, stream, INT64_MIN, timestamp, timestamp, 0) >= 0;
}

void Demuxer::setCancellation(IsCancelled isCancelled) {
    m_state->isCancelled = std::move(isCancelled);
}

}  // namespace zeb::ffmpeg
