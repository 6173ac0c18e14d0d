#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "media/Media.h"
#include "media/demuxing/Demuxer.h"
#include "media/demuxing/StreamFacts.h"
#include "media/ffmpeg/Handles.h"

namespace zeb::ffmpeg {

/// Decodes one sound stream to interleaved floats from presentation time 0 on. If the rate or the channels of
/// a stream change, the rest is converted to the first format, so that pitch and length are preserved.
class FFmpegSoundReader final : public SoundReader {
public:
    /// `duration` is the length of the presentation in seconds, 0 if unknown.
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
    double m_latest;  ///< seconds; later times are taken for damage
    CodecContext m_decoder;
    Packet m_packet;
    Frame m_frame;
    bool m_packetsEnded = false;

    int m_rate = 0;  ///< Hz, of the output; 0 until the first frame
    int m_channels = 0;
    std::int64_t m_delivered = 0;  ///< sample frames returned, from presentation time 0 on
    std::int64_t m_silence = 0;    ///< sample frames of silence to return before `m_samples`
    Frame m_layout;                ///< holds the channel layout of the output
    Resampler m_resampler;
    Frame m_resamplerInput;  ///< holds the format of the resampler's input
    std::vector<float> m_samples;
    std::vector<float> m_silentSamples;
    bool m_samplesPending = false;
};

}  // namespace zeb::ffmpeg
