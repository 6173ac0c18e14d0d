#include "Frames.h"

#include <stdexcept>

#include "Clips.h"

namespace zeb::test {
namespace {

ffmpeg::Frame emptyFrame(AVPixelFormat format, int width, int height) {
    ffmpeg::Frame frame = ffmpeg::makeFrame();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 64) < 0) throw std::bad_alloc();
    return frame;
}

}  // namespace

ffmpeg::Frame paintedFrame(AVPixelFormat format, int width, int height, const Painter& painter,
                           bool isFullRange) {
    library();  // silences the libraries
    ffmpeg::Frame painted = emptyFrame(AV_PIX_FMT_RGBA, width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Colour colour = painter(x, y);
            for (int c = 0; c < 4; ++c) {
                painted->data[0][y * painted->linesize[0] + x * 4 + c] =
                    static_cast<std::uint8_t>(colour[static_cast<std::size_t>(c)]);
            }
        }
    }
    if (format == AV_PIX_FMT_RGBA) return painted;
    ffmpeg::Frame frame = emptyFrame(format, width, height);
    const ffmpeg::Converter converter(
        sws_getContext(width, height, AV_PIX_FMT_RGBA, width, height, format,
                       SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP, nullptr,
                       nullptr, nullptr));
    const int* matrix = sws_getCoefficients(SWS_CS_ITU601);
    if (isFullRange) {
        sws_setColorspaceDetails(converter.get(), matrix, 1, matrix, 1, 0, 1 << 16, 1 << 16);
        frame->color_range = AVCOL_RANGE_JPEG;
    }
    if (sws_scale(converter.get(), painted->data, painted->linesize, 0, height, frame->data,
                  frame->linesize) != height) {
        throw std::runtime_error("no such frame can be made");
    }
    return frame;
}

ffmpeg::Frame codedFrame(AVPixelFormat format, int width, int height, std::array<int, 3> values) {
    ffmpeg::Frame frame = emptyFrame(format, width, height);
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    for (int c = 0; c < description.nb_components; ++c) {
        const AVComponentDescriptor& component = description.comp[c];
        const bool isChroma = (c == 1 || c == 2) && (description.flags & AV_PIX_FMT_FLAG_RGB) == 0;
        const int rows = isChroma ? -(-height >> description.log2_chroma_h) : height;
        const int columns = isChroma ? -(-width >> description.log2_chroma_w) : width;
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < columns; ++x) {
                std::uint8_t* sample = frame->data[component.plane] + y * frame->linesize[component.plane] +
                                       x * component.step + component.offset;
                const int value = values[static_cast<std::size_t>(c)];
                sample[0] = static_cast<std::uint8_t>(value);
                if (component.depth > 8) sample[1] = static_cast<std::uint8_t>(value >> 8);
            }
        }
    }
    return frame;
}

std::shared_ptr<const Picture> picture(ffmpeg::Frame frame, const ffmpeg::Orientation& orientation,
                                       ffmpeg::Ratio sampleAspect) {
    ffmpeg::VideoStreamFacts facts;
    facts.orientation = orientation;
    facts.sampleAspect = sampleAspect;
    return std::make_shared<ffmpeg::FramePicture>(std::move(frame), facts,
                                                  std::make_shared<ffmpeg::DrawingTools>());
}

Colour colourOf(const Picture& picture, DrawingColourSpace colourSpace) {
    const auto pixels = draw(picture, 8, 8, colourSpace);
    const std::size_t middle = (4 * 8 + 4) * 4;
    return {pixels[middle], pixels[middle + 1], pixels[middle + 2], pixels[middle + 3]};
}

}  // namespace zeb::test
