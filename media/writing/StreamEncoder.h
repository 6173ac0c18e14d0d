#pragma once

#include <functional>
#include <span>
#include <string>

#include "media/FilmWriter.h"
#include "media/ffmpeg/Handles.h"
#include "media/writing/Muxer.h"

struct AVCodec;

namespace zeb::ffmpeg {

/// An encoder that a stream may be made with, in the order of preference.
struct EncoderChoice {
    const char* name;     ///< the library's name of it
    const char* options;  ///< its own options, as text ("crf=12:preset=veryfast")
    int format;           ///< AVPixelFormat or AVSampleFormat; -1 = the encoder's first
    int value;            ///< what the stream's own setup makes of it
};

/// An opened encoder and the stream of a film that its packets go to.
class StreamEncoder {
public:
    /// Opens the first of `choices` that this system has and that takes what `setUp` asks of it. Throws
    /// `FilmError`: there is no encoder for `what`, or none takes it.
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
    /// To be called once, before the film is started.
    void attach() { m_stream = &m_muxer->addStream(*m_context); }

    /// Encodes a frame and writes what is ready.
    void encode(const AVFrame& frame) { send(&frame, {}); }
    /// Writes all that is left; returns early when `isCancelled` answers true.
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
    bool m_wasRefused = false;  ///< an encoder is there but did not take it
};

/// Opens an encoder by its name outside of any film; nothing when it is not there or refuses.
CodecContext openEncoder(const AVCodec& codec, CodecContext context, const char* options);

}  // namespace zeb::ffmpeg
