#include "platform/ffmpeg/Deinterlacer.h"

#include <new>
#include <string>

#include "platform/Media.h"
#include "platform/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

constexpr int nanosecond = 1'000'000'000;

void require(int result) {
    if (result < 0) throw MediaError(MediaError::cannotDecode, "The interlaced pictures cannot be combined");
}

}  // namespace

Deinterlacer::Deinterlacer(const AVFrame& first, int threads)
    : m_graph(avfilter_graph_alloc()), m_width(first.width), m_height(first.height), m_format(first.format) {
    if (!m_graph) throw std::bad_alloc();
    m_graph->nb_threads = threads;
    const std::string source = "video_size=" + std::to_string(first.width) + "x" +
                               std::to_string(first.height) + ":pix_fmt=" + std::to_string(first.format) +
                               ":time_base=1/" + std::to_string(nanosecond) + ":pixel_aspect=1/1";
    require(avfilter_graph_create_filter(&m_source, avfilter_get_by_name("buffer"), "in", source.c_str(),
                                         nullptr, m_graph.get()));
    require(avfilter_graph_create_filter(&m_sink, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr,
                                         m_graph.get()));
    AVFilterContext* filter = nullptr;
    require(avfilter_graph_create_filter(&filter, avfilter_get_by_name("bwdif"), "deinterlace",
                                         "mode=send_frame:parity=auto:deint=interlaced", nullptr,
                                         m_graph.get()));
    require(avfilter_link(m_source, 0, filter, 0));
    require(avfilter_link(filter, 0, m_sink, 0));
    require(avfilter_graph_config(m_graph.get(), nullptr));
}

bool Deinterlacer::takes(const AVFrame& frame) const {
    return frame.width == m_width && frame.height == m_height && frame.format == m_format;
}

void Deinterlacer::push(AVFrame* frame) {
    require(av_buffersrc_add_frame(m_source, frame));
}

Frame Deinterlacer::pull() {
    Frame frame = makeFrame();
    const int result = av_buffersink_get_frame(m_sink, frame.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return nullptr;
    require(result);
    frame->pts = av_rescale_q(frame->pts, av_buffersink_get_time_base(m_sink), AVRational{1, nanosecond});
    return frame;
}

}  // namespace zeb::ffmpeg
