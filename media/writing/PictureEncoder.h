#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "media/FilmWriter.h"
#include "media/writing/PaletteReducer.h"
#include "media/writing/StreamEncoder.h"

namespace zeb::ffmpeg {

/// The picture stream of a video: converts sRGB pixels to the encoder's format and encodes them.
class PictureEncoder {
public:
    PictureEncoder(Muxer& muxer, const FilmParameters& parameters);

    void add(std::span<const std::uint8_t> pixels);
    void finish(const std::function<bool()>& isCancelled);

    StreamEncoder& stream() { return m_encoder; }
    const StreamEncoder& stream() const { return m_encoder; }

private:
    Frame makePixels(std::span<const std::uint8_t> pixels) const;
    Frame convert(const AVFrame& pixels) const;

    const FilmParameters m_parameters;
    StreamEncoder m_encoder;
    Converter m_converter;  ///< null if the encoder accepts the pixels unconverted
    std::unique_ptr<PaletteReducer> m_reducer;
    std::int64_t m_count = 0;
    std::int64_t m_lastTime = -1;
};

}  // namespace zeb::ffmpeg
