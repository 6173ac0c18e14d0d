#include "media/drawing/Deinterlacer.h"

#include <new>
#include <string>

#include "media/Media.h"
#include "media/ffmpeg/FilterLibrary.h"

namespace zeb::ffmpeg {
namespace {

constexpr int nanosecond = 1'000'000'000;

void require(int result) {
    if (result < 0) throw MediaError(MediaError::cannotDecode, {"error_media_deinterlacing"});
}

}  // namespace

Deinterlacer::Deinterlacer(const AVFrame& first, int threads)
    : m_graph(FilterLibrary::get().graphAlloc()),
      m_width(first.width),
      m_height(first.height),
      m_format(first.format) {
    if (!m_graph) throw std::bad_alloc();
    const FilterLibrary& library = FilterLibrary::get();
    m_graph->nb_threads = threads;
    const std::string source = "video_size=" + std::to_string(first.width) + "x" +
                               std::to_string(first.height) + ":pix_fmt=" + std::to_string(first.format) +
                               ":time_base=1/" + std::to_string(nanosecond) + ":pixel_aspect=1/1";
    require(library.graphCreateFilter(&m_source, library.getByName("buffer"), "in", source.c_str(), nullptr,
                                      m_graph.get()));
    require(library.graphCreateFilter(&m_sink, library.getByName("buffersink"), "out", nullptr, nullptr,
                                      m_graph.get()));
    AVFilterContext* filter = nullptr;
    require(library.graphCreateFilter(&filter, library.getByName("bwdif"), "deinterlace",
                                      "mode=send_frame:parity=auto:deint=interlaced", nullptr,
                                      m_graph.get()));
    require(library.link(m_source, 0, filter, 0));
    require(library.link(filter, 0, m_sink, 0));
    require(library.graphConfig(m_graph.get(), nullptr));
}

bool Deinterlacer::takes(const AVFrame& frame) const {
    return frame.width == m_width && frame.height == m_height && frame.format == m_format;
}

void Deinterlacer::push(AVFrame* frame) {
    require(FilterLibrary::get().sourceAddFrame(m_source, frame));
}

Frame Deinterlacer::pull() {
    const FilterLibrary& library = FilterLibrary::get();
    Frame frame = makeFrame();
    const int result = library.sinkGetFrame(m_sink, frame.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return nullptr;
    require(result);
    frame->pts = av_rescale_q(frame->pts, library.sinkGetTimeBase(m_sink), AVRational{1, nanosecond});
    return frame;
}

}  // namespace zeb::ffmpeg
