#include "media/writing/StreamEncoder.h"

#include <new>
#include <utility>

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {

CodecContext openEncoder(const AVCodec& codec, CodecContext context, const char* options) {
    AVDictionary* dictionary = nullptr;
    int result = av_dict_parse_string(&dictionary, options, "=", ":", 0);
    if (result >= 0) result = avcodec_open2(context.get(), &codec, &dictionary);
    av_dict_free(&dictionary);
    return result >= 0 ? std::move(context) : nullptr;
}

bool StreamEncoder::allocate(const EncoderChoice& choice) {
    const AVCodec* codec = avcodec_find_encoder_by_name(choice.name);
    if (codec == nullptr) return false;
    m_context.reset(avcodec_alloc_context3(codec));
    if (!m_context) throw std::bad_alloc();
    m_context->flags |= m_muxer->encoderFlags() | AV_CODEC_FLAG_BITEXACT;
    // Some commonly used encoders are marked as experimental.
    m_context->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    return true;
}

bool StreamEncoder::open(const EncoderChoice& choice) {
    const AVCodec& codec = *m_context->codec;
    m_context = openEncoder(codec, std::move(m_context), choice.options);
    m_wasRefused = m_wasRefused || !m_context;
    m_name = choice.name;
    return m_context != nullptr;
}

void StreamEncoder::fail(const KeyedText& what, std::span<const EncoderChoice> choices) const {
    std::string names;
    for (const EncoderChoice& choice : choices)
        names += (names.empty() ? "" : ", ") + std::string(choice.name);
    if (m_wasRefused) throw FilmError(FilmError::cannotEncode, {"error_film_refused_format", {what}});
    throw FilmError(FilmError::noEncoder, {"error_film_no_encoder_format", {what, names}});
}

void StreamEncoder::send(const AVFrame* frame, const std::function<bool()>& isCancelled) {
    int result = avcodec_send_frame(m_context.get(), frame);
    while (result >= 0) {
        if (isCancelled && isCancelled()) return;
        result = avcodec_receive_packet(m_context.get(), m_packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return;
        if (result < 0) break;
        m_muxer->write(*m_packet, *m_context, *m_stream);
    }
    throw FilmError(FilmError::cannotEncode, {"error_film_encoder_failed_format", {m_name}});
}

}  // namespace zeb::ffmpeg
