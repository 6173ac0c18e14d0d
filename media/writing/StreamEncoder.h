#pragma once

#include <functional>
#include <span>
#include <string>

#include "media/FilmWriter.h"
#include "media/ffmpeg/Handles.h"
#include "media/writing/Muxer.h"

struct AVCodec;

namespace zeb::ffmpeg {

/// An encoder to try for a stream. Choices are listed in order of preference.
struct EncoderChoice {
    const char* name;     ///< the library's name of the encoder
    const char* options;  ///< options of the encoder, as text ("crf=12:preset=veryfast")
    int format;           ///< AVPixelFormat or AVSampleFormat; -1 = the encoder's first
    int value;            ///< parameter for the set-up function of the stream
};

/// An opened encoder and the stream that receives its packets.
class StreamEncoder {
public:
    /// Opens the first of `choices` that this system has and that accepts the parameters set by `setUp`.
    /// Throws `FilmError` if there is no encoder for `what` or none accepts them.
    template <typename SetUp>
    StreamEncoder(Muxer& muxer, const KeyedText& what, std::span<const EncoderChoice> choices,
                  const SetUp& setUp)
        : m_muxer(&muxer) {
        for (const EncoderChoice& choice : choices) {
            if (!allocate(choice)) continue;
            setUp(*m_context, choice);
            if (open(choice)) return;
        }
        fail(what, choices);
    }

    AVCodecContext& context() const { return *m_context; }
    const std::string& name() const { return m_name; }
    /// Adds the stream to the muxer. Called once, before `Muxer::start`.
    void attach() { m_stream = &m_muxer->addStream(*m_context); }

    /// Encodes a frame and writes the packets that are ready.
    void encode(const AVFrame& frame) { send(&frame, {}); }
    /// Writes all remaining packets; returns early if `isCancelled` returns true.
    void finish(const std::function<bool()>& isCancelled) { send(nullptr, isCancelled); }

private:
    bool allocate(const EncoderChoice& choice);
    bool open(const EncoderChoice& choice);
    void send(const AVFrame* frame, const std::function<bool()>& isCancelled);
    [[noreturn]] void fail(const KeyedText& what, std::span<const EncoderChoice> choices) const;

    Muxer* m_muxer;
    CodecContext m_context;
    AVStream* m_stream = nullptr;
    Packet m_packet = makePacket();
    std::string m_name;
    bool m_wasRefused = false;  ///< an encoder exists but rejected the parameters
};

/// Opens an encoder by its name, without a stream; returns null if it is missing or rejects the parameters.
CodecContext openEncoder(const AVCodec& codec, CodecContext context, const char* options);

}  // namespace zeb::ffmpeg
