#include "media/writing/PictureEncoder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

/// Format of the pixels passed to `add`.
constexpr AVPixelFormat pixelFormat = AV_PIX_FMT_BGR0;

constexpr int gifClock = 100;     // ticks per second
constexpr int shortestDelay = 2;  // ticks; players show pictures with a shorter delay for a tenth of a second

// value: the quantiser scale, for encoders without a quality option; else 0.
constexpr std::array mp4Encoders = {
    EncoderChoice{"libx264", "preset=veryfast:crf=12", AV_PIX_FMT_YUV420P, 0},
    EncoderChoice{"mpeg4", "", AV_PIX_FMT_YUV420P, 2},
};
constexpr std::array webmEncoders = {
    EncoderChoice{"libvpx-vp9", "deadline=realtime:cpu-used=5:row-mt=1:crf=8:b=0", AV_PIX_FMT_YUV420P, 0},
    EncoderChoice{"libsvtav1", "preset=9:crf=12", AV_PIX_FMT_YUV420P, 0},
    EncoderChoice{"libvpx", "deadline=good:cpu-used=4:crf=4:b=40M", AV_PIX_FMT_YUV420P, 0},
};
constexpr std::array matroskaEncoders = {
    EncoderChoice{"ffv1", "level=3:slices=4:slicecrc=1:g=1", AV_PIX_FMT_BGR0, 0},
    EncoderChoice{"libx264rgb", "preset=veryfast:qp=0", AV_PIX_FMT_BGR0, 0},
    EncoderChoice{"png", "", AV_PIX_FMT_RGB24, 0},
};
constexpr std::array gifEncoders = {EncoderChoice{"gif", "", AV_PIX_FMT_PAL8, 0}};

std::span<const EncoderChoice> choicesFor(FilmFormat format) {
    switch (format) {
        case FilmFormat::mp4:
            return mp4Encoders;
        case FilmFormat::matroska:
            return matroskaEncoders;
        case FilmFormat::webm:
            return webmEncoders;
        case FilmFormat::gif:
            return gifEncoders;
    }
    return {};
}

const char* nameOf(FilmFormat format) {
    switch (format) {
        case FilmFormat::mp4:
            return "MP4";
        case FilmFormat::matroska:
            return "Matroska";
        case FilmFormat::webm:
            return "WebM";
        case FilmFormat::gif:
            return "GIF";
    }
    return "";
}

bool isYCbCr(AVPixelFormat format) {
    return format == AV_PIX_FMT_YUV420P;
}

/// The H.264 and AV1 encoders crop whole chroma samples only; the other encoders store odd sides.
bool needsEvenSides(const std::string& encoder) {
    return encoder == "libx264" || encoder == "libsvtav1";
}

int roundedUp(int side, bool toEven) {
    return toEven ? (side + 1) / 2 * 2 : side;
}

void setUp(AVCodecContext& context, const EncoderChoice& choice, const FilmParameters& parameters) {
    const auto format = static_cast<AVPixelFormat>(choice.format);
    const bool even = needsEvenSides(choice.name);
    context.width = roundedUp(parameters.width, even);
    context.height = roundedUp(parameters.height, even);
    context.pix_fmt = format;
    context.sample_aspect_ratio = {1, 1};
    const int ticks = parameters.format == FilmFormat::gif ? gifClock : parameters.picturesPerSecond;
    context.time_base = {1, ticks};
    context.framerate = {parameters.picturesPerSecond, 1};
    // A key frame at least every four seconds, for seeking in players.
    context.gop_size = std::clamp(parameters.picturesPerSecond * 4, 4, 250);
    context.thread_count = 0;
    // The pictures are sRGB. As Y'CbCr they use the matrix of BT.709, which has the same primaries.
    context.color_primaries = AVCOL_PRI_BT709;
    context.color_trc = AVCOL_TRC_IEC61966_2_1;
    if (isYCbCr(format)) {
        context.colorspace = AVCOL_SPC_BT709;
        context.color_range = AVCOL_RANGE_MPEG;
        context.chroma_sample_location = AVCHROMA_LOC_CENTER;
    } else {
        context.colorspace = AVCOL_SPC_RGB;
        context.color_range = AVCOL_RANGE_JPEG;
    }
    if (choice.value > 0) {
        context.flags |= AV_CODEC_FLAG_QSCALE;
        context.global_quality = FF_QP2LAMBDA * choice.value;
    }
}

Converter makeConverter(const AVCodecContext& encoder) {
    if (encoder.pix_fmt == pixelFormat || encoder.pix_fmt == AV_PIX_FMT_PAL8) return nullptr;
    const int width = roundedUp(encoder.width, true);
    const int height = roundedUp(encoder.height, true);
    constexpr int flags = SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP | SWS_FULL_CHR_H_INT;
    Converter converter(sws_getContext(width, height, pixelFormat, width, height, encoder.pix_fmt, flags,
                                       nullptr, nullptr, nullptr));
    if (!converter) throw std::bad_alloc();
    const int* matrix = sws_getCoefficients(SWS_CS_ITU709);
    const int range = encoder.color_range == AVCOL_RANGE_JPEG ? 1 : 0;
    sws_setColorspaceDetails(converter.get(), matrix, 1, matrix, range, 0, 1 << 16, 1 << 16);
    return converter;
}

Frame makeBuffer(AVPixelFormat format, int width, int height) {
    Frame frame = makeFrame();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    return frame;
}

}  // namespace

PictureEncoder::PictureEncoder(Muxer& muxer, const FilmParameters& parameters)
    : m_parameters(parameters),
      m_encoder(
          muxer,
          {"film_pictures_format",
           {nameOf(parameters.format), std::int64_t{parameters.width}, std::int64_t{parameters.height}}},
          choicesFor(parameters.format),
          [&](AVCodecContext& context, const EncoderChoice& choice) { setUp(context, choice, parameters); }),
      m_converter(makeConverter(m_encoder.context())) {
    if (parameters.format == FilmFormat::gif)
        m_reducer = std::make_unique<PaletteReducer>(parameters.width, parameters.height);
}

void PictureEncoder::add(std::span<const std::uint8_t> pixels) {
    const std::int64_t index = m_count++;
    std::int64_t time = index;
    if (m_reducer) {
        time = av_rescale(index, gifClock, m_parameters.picturesPerSecond);
        if (index > 0 && time - m_lastTime < shortestDelay) return;
        m_lastTime = time;
    }
    Frame frame = makePixels(pixels);
    frame->pts = time;
    if (!m_reducer) {
        if (m_converter) frame = convert(*frame);
        return m_encoder.encode(*frame);
    }
    m_reducer->push(frame.get());
    while (const Frame reduced = m_reducer->pull())
        m_encoder.encode(*reduced);
}

void PictureEncoder::finish(const std::function<bool()>& isCancelled) {
    if (m_reducer) {
        m_reducer->push(nullptr);
        while (const Frame reduced = m_reducer->pull())
            m_encoder.encode(*reduced);
    }
    m_encoder.finish(isCancelled);
}

/// Returns the picture as a frame. If it will be converted, repeats the last column and row to make the sides
/// even.
Frame PictureEncoder::makePixels(std::span<const std::uint8_t> pixels) const {
    const AVCodecContext& encoder = m_encoder.context();
    const AVPixelFormat format = m_reducer ? AV_PIX_FMT_RGB32 : pixelFormat;
    const int width = roundedUp(encoder.width, m_converter != nullptr);
    const int height = roundedUp(encoder.height, m_converter != nullptr);
    Frame frame = makeBuffer(format, width, height);
    const auto rowBytes = static_cast<std::size_t>(m_parameters.width) * 4;
    for (int y = 0; y < height; ++y) {
        std::uint8_t* target = frame->data[0] + std::ptrdiff_t{y} * frame->linesize[0];
        const auto row = static_cast<std::size_t>(std::min(y, m_parameters.height - 1));
        std::memcpy(target, pixels.data() + row * rowBytes, rowBytes);
        for (int x = 0; x < m_parameters.width; ++x)
            target[4 * x + 3] = 255;
        if (width > m_parameters.width) std::memcpy(target + rowBytes, target + rowBytes - 4, 4);
    }
    return frame;
}

Frame PictureEncoder::convert(const AVFrame& pixels) const {
    const AVCodecContext& encoder = m_encoder.context();
    Frame frame = makeBuffer(encoder.pix_fmt, pixels.width, pixels.height);
    if (sws_scale(m_converter.get(), pixels.data, pixels.linesize, 0, pixels.height, frame->data,
                  frame->linesize) != pixels.height) {
        throw FilmError(FilmError::cannotEncode, {"error_film_colours"});
    }
    // Crop to the odd size. The chroma samples at the edge were made from whole pairs of pixels.
    frame->width = encoder.width;
    frame->height = encoder.height;
    frame->pts = pixels.pts;
    frame->color_primaries = encoder.color_primaries;
    frame->color_trc = encoder.color_trc;
    frame->colorspace = encoder.colorspace;
    frame->color_range = encoder.color_range;
    frame->chroma_location = encoder.chroma_sample_location;
    return frame;
}

}  // namespace zeb::ffmpeg
