#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "media/Media.h"
#include "media/ffmpeg/Handles.h"
#include "media/reading/Demuxer.h"
#include "media/reading/StreamFacts.h"

namespace zeb::ffmpeg {

/// Decodes one sound stream to interleaved floats from presentation time 0 on. Where a stream changes its
/// rate or channels on the way, the rest is brought to what it started with, so that pitch and length stay
/// right.
class FFmpegSoundReader final : public SoundReader {
public:
    /// `duration` is the length of the presentation in seconds, 0 when unknown.
    FFmpegSoundReader(std::unique_ptr<Demuxer> demuxer, const SoundStreamFacts& facts, double origin,
                      double duration);

    bool startReading() override;
    std::optional<SampleBuffer> copyNextSampleBuffer() override;

private:
    bool decodeNextFrame();
    void take(const AVFrame& frame);
    void appendSilence(std::int64_t frames);
    void appendConverted(const AVFrame& frame, std::int64_t skip);
    void prepareResampler(const AVFrame& frame);
    void drainResampler();

    std::unique_ptr<Demuxer> m_demuxer;
    SoundStreamFacts m_facts;
    double m_origin;
    double m_latest;  ///< seconds; times of sound beyond this are not believed
    CodecContext m_decoder;
    Packet m_packet;
    Frame m_frame;
    bool m_packetsEnded = false;

    int m_rate = 0;  ///< of what is delivered; 0 until the first frame
    int m_channels = 0;
    std::int64_t m_delivered = 0;  ///< sample frames so far, presentation time 0 being 0
    std::int64_t m_silence = 0;    ///< sample frames of silence still to deliver before `m_samples`
    Frame m_layout;                ///< carries the channel layout of what is delivered
    Resampler m_resampler;
    Frame m_resamplerInput;  ///< carries the format that the resampler takes
    std::vector<float> m_samples;
    std::vector<float> m_silentSamples;
    bool m_samplesPending = false;
};

}  // namespace zeb::ffmpeg
