#include "media/drawing/PlanarFrame.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>

#include "media/ffmpeg/Libraries.h"
#include "platform/text/LocalizedText.h"

namespace zeb::ffmpeg {
namespace {

constexpr int alignment = 64;

/// Returns true if every component has a separate plane in a form that the scaler supports.
bool isPlanarForm(const AVPixFmtDescriptor& format) {
    constexpr std::uint64_t unreadable =
        AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_BAYER;
    const int depth = format.comp[0].depth;
    const bool isFloat = (format.flags & AV_PIX_FMT_FLAG_FLOAT) != 0;
    if ((format.flags & unreadable) != 0 || format.nb_components == 2) return false;
    if (depth > 8 && (format.flags & AV_PIX_FMT_FLAG_BE) != 0) return false;
    if (isFloat ? depth != 32 : depth < 8 || depth > 16) return false;
    const int bytes = isFloat ? 4 : depth > 8 ? 2 : 1;
    for (int i = 0; i < format.nb_components; ++i) {
        const AVComponentDescriptor& component = format.comp[i];
        if (component.step != bytes || component.shift != 0 || component.offset != 0 ||
            component.depth != depth) {
            return false;
        }
        for (int j = 0; j < i; ++j) {
            if (format.comp[j].plane == component.plane) return false;
        }
    }
    return true;
}

/// Returns the planar format of the same kind and chroma sampling and of at least the same depth, for packed,
/// semi-planar, palette, big-endian and other layouts.
AVPixelFormat planarCounterpart(const AVPixFmtDescriptor& source) {
    const bool isRGB =
        (source.flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BAYER)) != 0;
    const bool hasAlpha = (source.flags & (AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_PAL)) != 0;
    const int depth = source.comp[0].depth;
    if (isRGB || source.nb_components == 2) {
        if (hasAlpha) return depth > 8 ? AV_PIX_FMT_GBRAP16LE : AV_PIX_FMT_GBRAP;
        return depth > 8 ? AV_PIX_FMT_GBRP16LE : AV_PIX_FMT_GBRP;
    }
    if (source.nb_components == 1) return depth > 8 ? AV_PIX_FMT_GRAY16LE : AV_PIX_FMT_GRAY8;
    const AVPixFmtDescriptor* best = nullptr;
    for (const AVPixFmtDescriptor* format = av_pix_fmt_desc_next(nullptr); format != nullptr;
         format = av_pix_fmt_desc_next(format)) {
        const bool fits = isPlanarForm(*format) && format->nb_components == source.nb_components &&
                          (format->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_FLOAT)) == 0 &&
                          format->log2_chroma_w == source.log2_chroma_w &&
                          format->log2_chroma_h == source.log2_chroma_h && format->comp[0].depth >= depth &&
                          std::strncmp(format->name, "yuvj", 4) != 0;
        if (fits && (best == nullptr || format->comp[0].depth < best->comp[0].depth)) best = format;
    }
    return best != nullptr ? av_pix_fmt_desc_get_id(best) : AV_PIX_FMT_NONE;
}

void allocate(AVFrame& frame, int format, int width, int height) {
    av_frame_unref(&frame);
    frame.format = format;
    frame.width = width;
    frame.height = height;
    if (av_frame_get_buffer(&frame, alignment) < 0) throw std::bad_alloc();
}

bool isAligned(const AVFrame& frame) {
    for (int plane = 0; plane < AV_NUM_DATA_POINTERS && frame.data[plane] != nullptr; ++plane) {
        if (reinterpret_cast<std::uintptr_t>(frame.data[plane]) % alignment != 0) return false;
        if (frame.linesize[plane] % alignment != 0) return false;
    }
    return true;
}

bool hasWholeChroma(const AVFrame& frame, const AVPixFmtDescriptor& format) {
    return (frame.width & ((1 << format.log2_chroma_w) - 1)) == 0 &&
           (frame.height & ((1 << format.log2_chroma_h) - 1)) == 0;
}

}  // namespace

PlatformError cannotDraw(const TextArgument& reason) {
    const KeyedText text{"error_media_cannot_draw_format", {reason}};
    return {"Media", 4, englishText(text), text};
}

const AVFrame& PlanarForm::of(const AVFrame& frame) {
    const auto* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    if (format == nullptr || (format->flags & AV_PIX_FMT_FLAG_HWACCEL) != 0)
        throw cannotDraw(KeyedText{"error_media_unknown_pixels"});
    const AVFrame* result = &frame;
    if (!isPlanarForm(*format)) {
        const AVPixelFormat planar = planarCounterpart(*format);
        if (planar == AV_PIX_FMT_NONE)
            throw cannotDraw(KeyedText{"error_media_pixels_format", {format->name}});
        result = &converted(frame, planar);
        format = av_pix_fmt_desc_get(planar);
    }
    return isAligned(*result) && hasWholeChroma(*result, *format) ? *result : padded(*result);
}

const AVFrame& PlanarForm::converted(const AVFrame& frame, int format) {
    if (!m_converted) m_converted = makeFrame();
    allocate(*m_converted, format, frame.width, frame.height);
    SwsContext* context = sws_getCachedContext(
        m_converter.release(), frame.width, frame.height, static_cast<AVPixelFormat>(frame.format),
        frame.width, frame.height, static_cast<AVPixelFormat>(format),
        SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP, nullptr, nullptr, nullptr);
    m_converter.reset(context);
    if (context == nullptr) throw cannotDraw(KeyedText{"error_media_packed_pixels"});
    const int rows = sws_scale(context, frame.data, frame.linesize, 0, frame.height, m_converted->data,
                               m_converted->linesize);
    if (rows != frame.height) throw cannotDraw(KeyedText{"error_media_packed_pixels"});
    return *m_converted;
}

const AVFrame& PlanarForm::padded(const AVFrame& frame) {
    const auto& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    const int width = (frame.width + (1 << format.log2_chroma_w) - 1) >> format.log2_chroma_w
                                                                             << format.log2_chroma_w;
    const int height = (frame.height + (1 << format.log2_chroma_h) - 1) >> format.log2_chroma_h
                                                                               << format.log2_chroma_h;
    if (!m_padded) m_padded = makeFrame();
    allocate(*m_padded, frame.format, width, height);
    const int bytes = (format.flags & AV_PIX_FMT_FLAG_FLOAT) != 0 ? 4 : format.comp[0].depth > 8 ? 2 : 1;
    for (int i = 0; i < format.nb_components; ++i) {
        const int plane = format.comp[i].plane;
        const bool isChroma = (i == 1 || i == 2) && (format.flags & AV_PIX_FMT_FLAG_RGB) == 0;
        const int shiftX = isChroma ? format.log2_chroma_w : 0;
        const int shiftY = isChroma ? format.log2_chroma_h : 0;
        const int columns = -(-frame.width >> shiftX), rows = -(-frame.height >> shiftY);  // rounded up
        const int allColumns = width >> shiftX, allRows = height >> shiftY;
        for (int y = 0; y < allRows; ++y) {
            const std::uint8_t* from =
                frame.data[plane] +
                static_cast<std::ptrdiff_t>(std::min(y, rows - 1)) * frame.linesize[plane];
            std::uint8_t* to =
                m_padded->data[plane] + static_cast<std::ptrdiff_t>(y) * m_padded->linesize[plane];
            std::memcpy(to, from, static_cast<std::size_t>(columns) * static_cast<std::size_t>(bytes));
            for (int x = columns; x < allColumns; ++x) {
                std::memcpy(to + x * bytes, from + (columns - 1) * bytes, static_cast<std::size_t>(bytes));
            }
        }
    }
    return *m_padded;
}

}  // namespace zeb::ffmpeg
