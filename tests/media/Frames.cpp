#include "Frames.h"

#include <stdexcept>

namespace zeb::test {

ffmpeg::Frame emptyFrame(AVPixelFormat format, int width, int height) {
    ffmpeg::Frame frame = ffmpeg::makeFrame();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 64) < 0) throw std::bad_alloc();
    return frame;
}

ffmpeg::Frame paintedFrame(AVPixelFormat format, int width, int height,
                           const std::function<Colour(int x, int y)>& painter, bool isFullRange) {
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
    for (std::size_t c = 0; c < description.nb_components; ++c) {
        for (int i = 0; i < width * height; ++i) {
            std::uint8_t* sample =
                frame->data[c] + i / width * frame->linesize[c] + i % width * description.comp[c].step;
            sample[0] = static_cast<std::uint8_t>(values[c]);
            if (description.comp[c].depth > 8) sample[1] = static_cast<std::uint8_t>(values[c] >> 8);
        }
    }
    return frame;
}

std::shared_ptr<const Picture> picture(ffmpeg::Frame frame, const ffmpeg::Orientation& orientation) {
    ffmpeg::VideoStreamFacts facts;
    facts.orientation = orientation;
    facts.sampleAspect = {1, 1};
    return std::make_shared<ffmpeg::FramePicture>(std::move(frame), facts,
                                                  std::make_shared<ffmpeg::DrawingTools>());
}

Colour colourOf(ffmpeg::Frame frame, DrawingColourSpace colourSpace) {
    return draw(*picture(std::move(frame)), 8, 8, colourSpace).at(4, 4);
}

}  // namespace zeb::test
