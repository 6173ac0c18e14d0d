#include "media/writing/SoundEncoder.h"

#include <algorithm>
#include <array>
#include <new>

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

constexpr int bitsPerChannel = 128'000;  // per second; sufficient for sound up to 10 kHz
constexpr int longestFrame = 4096;       // for encoders that accept any number of samples

// value: the sample rate in Hz, 0 = unchanged. The compressed formats do not support 20 kHz.
constexpr std::array mp4Encoders = {
    EncoderChoice{"aac", "", -1, 48000},
    EncoderChoice{"libmp3lame", "", -1, 48000},
};
constexpr std::array webmEncoders = {
    EncoderChoice{"libopus", "", -1, 48000},
    EncoderChoice{"libvorbis", "", -1, 48000},
    EncoderChoice{"opus", "", -1, 48000},
};
constexpr std::array matroskaEncoders = {
    EncoderChoice{"pcm_u8", "", AV_SAMPLE_FMT_U8, 0},
    EncoderChoice{"flac", "", AV_SAMPLE_FMT_S16, 0},
};

std::span<const EncoderChoice> choicesFor(FilmFormat format) {
    switch (format) {
        case FilmFormat::mp4:
            return mp4Encoders;
        case FilmFormat::webm:
            return webmEncoders;
        default:
            return matroskaEncoders;
    }
}

void setUp(AVCodecContext& context, const EncoderChoice& choice, const FilmParameters& parameters) {
    const AVCodec& codec = *context.codec;
    context.sample_fmt = choice.format >= 0             ? static_cast<AVSampleFormat>(choice.format)
                         : codec.sample_fmts != nullptr ? codec.sample_fmts[0]
                                                        : AV_SAMPLE_FMT_FLTP;
    context.sample_rate = choice.value > 0 ? choice.value : parameters.soundRate;
    context.time_base = {1, context.sample_rate};
    av_channel_layout_default(&context.ch_layout, parameters.soundChannels);
    context.bit_rate = std::int64_t{bitsPerChannel} * parameters.soundChannels;
}

Resampler makeResampler(AVCodecContext& encoder, const FilmParameters& parameters) {
    SwrContext* context = nullptr;
    const int result =
        swr_alloc_set_opts2(&context, &encoder.ch_layout, encoder.sample_fmt, encoder.sample_rate,
                            &encoder.ch_layout, AV_SAMPLE_FMT_U8, parameters.soundRate, 0, nullptr);
    Resampler resampler(context);
    if (result < 0) throw std::bad_alloc();
    if (swr_init(resampler.get()) < 0) throw FilmError(FilmError::cannotEncode, {"error_film_sound"});
    return resampler;
}

}  // namespace

SoundEncoder::SoundEncoder(Muxer& muxer, const FilmParameters& parameters)
    : m_parameters(parameters),
      m_encoder(
          muxer, {"film_sound"}, choicesFor(parameters.format),
          [&](AVCodecContext& context, const EncoderChoice& choice) { setUp(context, choice, parameters); }),
      m_resampler(makeResampler(m_encoder.context(), parameters)),
      m_queue(av_audio_fifo_alloc(m_encoder.context().sample_fmt, parameters.soundChannels, longestFrame)) {
    if (!m_queue) throw std::bad_alloc();
    // WebM stores the encoder's delay in the track header, and players subtract it. The muxer does not shift
    // the packets' times, so we add the delay.
    if (parameters.format == FilmFormat::webm) m_encoded = m_encoder.context().initial_padding;
}

void SoundEncoder::add(std::span<const std::uint8_t> samples) {
    convert(samples);
    encodeQueued(false);
}

void SoundEncoder::finish(const std::function<bool()>& isCancelled) {
    convert({});
    encodeQueued(true);
    m_encoder.finish(isCancelled);
}

void SoundEncoder::convert(std::span<const std::uint8_t> samples) {
    const int count = static_cast<int>(samples.size()) / m_parameters.soundChannels;
    const int capacity = swr_get_out_samples(m_resampler.get(), count);
    if (capacity <= 0) return;
    const Frame frame = makeSamples(capacity);
    const std::uint8_t* input = samples.data();
    const int converted =
        swr_convert(m_resampler.get(), frame->extended_data, capacity, count > 0 ? &input : nullptr, count);
    if (converted < 0) throw FilmError(FilmError::cannotEncode, {"error_film_sound"});
    void** planes = reinterpret_cast<void**>(frame->extended_data);
    if (av_audio_fifo_write(m_queue.get(), planes, converted) < converted) throw std::bad_alloc();
}

void SoundEncoder::encodeQueued(bool isEnd) {
    const int fixed = m_encoder.context().frame_size;
    for (;;) {
        const int queued = av_audio_fifo_size(m_queue.get());
        const int wanted = fixed > 0 ? fixed : longestFrame;
        if (queued == 0 || (queued < wanted && fixed > 0 && !isEnd)) return;
        const Frame frame = makeSamples(std::min(queued, wanted));
        void** planes = reinterpret_cast<void**>(frame->extended_data);
        av_audio_fifo_read(m_queue.get(), planes, frame->nb_samples);
        frame->pts = m_encoded;
        m_encoded += frame->nb_samples;
        m_encoder.encode(*frame);
    }
}

Frame SoundEncoder::makeSamples(int count) const {
    const AVCodecContext& encoder = m_encoder.context();
    Frame frame = makeFrame();
    frame->format = encoder.sample_fmt;
    frame->sample_rate = encoder.sample_rate;
    frame->nb_samples = count;
    if (av_channel_layout_copy(&frame->ch_layout, &encoder.ch_layout) < 0 ||
        av_frame_get_buffer(frame.get(), 0) < 0) {
        throw std::bad_alloc();
    }
    return frame;
}

}  // namespace zeb::ffmpeg
