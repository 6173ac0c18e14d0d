#include "media/reading/FFmpegSoundReader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

constexpr double leastGap = 0.020;            // seconds; shorter gaps are rounding and jitter
constexpr std::int64_t silenceAtOnce = 4096;  // sample frames

bool sameFormat(const AVFrame& a, const AVFrame& b) {
    return a.format == b.format && a.sample_rate == b.sample_rate &&
           av_channel_layout_compare(&a.ch_layout, &b.ch_layout) == 0;
}

void copyFormat(AVFrame& to, const AVFrame& from) {
    to.format = from.format;
    to.sample_rate = from.sample_rate;
    if (av_channel_layout_copy(&to.ch_layout, &from.ch_layout) < 0) throw std::bad_alloc();
}

}  // namespace

FFmpegSoundReader::FFmpegSoundReader(std::unique_ptr<Demuxer> demuxer, const SoundStreamFacts& facts,
                                     double origin, double duration)
    : m_demuxer(std::move(demuxer)),
      m_facts(facts),
      m_origin(origin),
      m_latest(duration > 0 ? duration + 1 : std::numeric_limits<double>::infinity()),
      m_packet(makePacket()),
      m_frame(makeFrame()),
      m_layout(makeFrame()),
      m_resamplerInput(makeFrame()) {
    AVFormatContext& format = *m_demuxer->format();
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        if (static_cast<int>(i) != facts.stream) format.streams[i]->discard = AVDISCARD_ALL;
    }
}

bool FFmpegSoundReader::startReading() {
    const AVStream& stream = *m_demuxer->format()->streams[m_facts.stream];
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (codec == nullptr) return false;
    m_decoder.reset(avcodec_alloc_context3(codec));
    if (!m_decoder || avcodec_parameters_to_context(m_decoder.get(), stream.codecpar) < 0)
        throw std::bad_alloc();
    m_decoder->pkt_timebase = stream.time_base;
    m_decoder->request_sample_fmt = AV_SAMPLE_FMT_FLT;
    return avcodec_open2(m_decoder.get(), codec, nullptr) >= 0;
}

std::optional<SampleBuffer> FFmpegSoundReader::copyNextSampleBuffer() {
    while (m_silence == 0 && !m_samplesPending) {
        m_samples.clear();
        if (!decodeNextFrame()) {
            drainResampler();
            if (m_samples.empty()) return std::nullopt;
        }
        m_samplesPending = !m_samples.empty();
    }
    SampleBuffer buffer{static_cast<double>(m_rate), m_channels, {}};
    if (m_silence > 0) {
        const std::int64_t count = std::min(m_silence, silenceAtOnce);
        m_silence -= count;
        m_silentSamples.resize(static_cast<std::size_t>(silenceAtOnce * m_channels), 0.0F);
        buffer.samples = std::span(m_silentSamples).first(static_cast<std::size_t>(count * m_channels));
    } else {
        buffer.samples = m_samples;
        m_samplesPending = false;
    }
    return buffer;
}

/// Decodes one frame into `m_samples` and `m_silence`; returns false at the end.
bool FFmpegSoundReader::decodeNextFrame() {
    for (;;) {
        const int result = avcodec_receive_frame(m_decoder.get(), m_frame.get());
        if (result >= 0) {
            // At a change of rate some decoders put the old rate into the first frame of the new one.
            if (m_decoder->sample_rate > 0) m_frame->sample_rate = m_decoder->sample_rate;
            take(*m_frame);
            av_frame_unref(m_frame.get());
            return true;
        }
        if (result == AVERROR_EOF || m_packetsEnded) return false;
        // Skip damaged packets. The time of the next packet shows the gap, which is filled with silence.
        bool isSent = false;
        while (!isSent) {
            if (!m_demuxer->read(*m_packet)) {
                m_packetsEnded = true;
                avcodec_send_packet(m_decoder.get(), nullptr);
                break;
            }
            if (m_packet->stream_index == m_facts.stream) {
                isSent = avcodec_send_packet(m_decoder.get(), m_packet.get()) >= 0;
            }
            av_packet_unref(m_packet.get());
        }
    }
}

void FFmpegSoundReader::take(const AVFrame& frame) {
    if (frame.nb_samples <= 0 || frame.sample_rate <= 0 || frame.ch_layout.nb_channels <= 0) return;
    if (m_rate == 0) {
        m_rate = frame.sample_rate;
        m_channels = frame.ch_layout.nb_channels;
        copyFormat(*m_layout, frame);
    }
    std::int64_t skip = 0;
    const std::int64_t stamp = frame.pts != AV_NOPTS_VALUE ? frame.pts : frame.best_effort_timestamp;
    if (stamp != AV_NOPTS_VALUE) {
        const double time = static_cast<double>(stamp) * m_facts.timeBase.value() - m_origin;
        const double ahead = time - static_cast<double>(m_delivered) / m_rate;
        if (ahead > leastGap && time <= m_latest) {  // a damaged time must not become hours of silence
            appendSilence(std::llround(ahead * m_rate));
        } else if (time < 0 && m_delivered == 0) {
            skip = std::min<std::int64_t>(std::llround(-time * frame.sample_rate), frame.nb_samples);
        }
    }
    if (skip < frame.nb_samples) appendConverted(frame, skip);
}

void FFmpegSoundReader::appendSilence(std::int64_t frames) {
    m_silence += frames;
    m_delivered += frames;
}

/// Makes a resampler for the frame's format; none if the format cannot be converted.
void FFmpegSoundReader::prepareResampler(const AVFrame& frame) {
    if (m_resampler && sameFormat(frame, *m_resamplerInput)) return;
    drainResampler();
    SwrContext* context = nullptr;
    copyFormat(*m_resamplerInput, frame);
    const int result = swr_alloc_set_opts2(
        &context, &m_layout->ch_layout, AV_SAMPLE_FMT_FLT, m_rate, &m_resamplerInput->ch_layout,
        static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    m_resampler.reset(context);
    if (result < 0 || swr_init(context) < 0) {
        m_resampler.reset();
    }
}

void FFmpegSoundReader::appendConverted(const AVFrame& frame, std::int64_t skip) {
    prepareResampler(frame);
    if (!m_resampler) return;  // a format that cannot be converted leaves a gap
    const auto channels = static_cast<std::size_t>(m_channels);
    const int most = swr_get_out_samples(m_resampler.get(), frame.nb_samples);
    const std::size_t before = m_samples.size();
    m_samples.resize(before + static_cast<std::size_t>(std::max(most, 0)) * channels);
    auto* output = reinterpret_cast<std::uint8_t*>(m_samples.data() + before);
    const int count = swr_convert(m_resampler.get(), &output, most,
                                  const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
    const auto converted = static_cast<std::size_t>(std::max(count, 0));
    m_samples.resize(before + converted * channels);
    const std::size_t dropped = std::min(static_cast<std::size_t>(skip), converted);
    const auto first = m_samples.begin() + static_cast<std::ptrdiff_t>(before);
    m_samples.erase(first, first + static_cast<std::ptrdiff_t>(dropped * channels));
    m_delivered += static_cast<std::int64_t>(converted - dropped);
}

/// Appends the samples that the resampler still holds and deletes it, before a change of format and at the
/// end.
void FFmpegSoundReader::drainResampler() {
    if (!m_resampler) return;
    const int most = swr_get_out_samples(m_resampler.get(), 0);
    if (most > 0) {
        const std::size_t before = m_samples.size();
        const auto channels = static_cast<std::size_t>(m_channels);
        m_samples.resize(before + static_cast<std::size_t>(most) * channels);
        auto* output = reinterpret_cast<std::uint8_t*>(m_samples.data() + before);
        const int count = swr_convert(m_resampler.get(), &output, most, nullptr, 0);
        m_samples.resize(before + static_cast<std::size_t>(std::max(count, 0)) * channels);
        m_delivered += std::max(count, 0);
    }
    m_resampler.reset();
}

}  // namespace zeb::ffmpeg
