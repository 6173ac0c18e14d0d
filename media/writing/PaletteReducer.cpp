#include "media/writing/PaletteReducer.h"

#include <new>
#include <string>

#include "media/FilmWriter.h"
#include "media/Media.h"
#include "media/ffmpeg/FilterLibrary.h"

namespace zeb::ffmpeg {
namespace {

void require(int result) {
    if (result < 0) throw FilmError(FilmError::cannotEncode, {"error_film_palette"});
}

const FilterLibrary& filterLibrary() {
    try {
        return FilterLibrary::get();
    } catch (const MediaError& error) {
        throw FilmError(FilmError::noEncoder, error.text());
    }
}

}  // namespace

PaletteReducer::PaletteReducer(int width, int height) : m_graph(filterLibrary().graphAlloc()) {
    if (!m_graph) throw std::bad_alloc();
    const FilterLibrary& library = filterLibrary();
    const auto add = [&](const char* filter, const char* name, const std::string& options) {
        AVFilterContext* context = nullptr;
        const AVFilter* kind = library.getByName(filter);
        require(kind != nullptr ? 0 : -1);
        require(library.graphCreateFilter(&context, kind, name, options.c_str(), nullptr, m_graph.get()));
        return context;
    };
    m_source = add("buffer", "in",
                   "video_size=" + std::to_string(width) + "x" + std::to_string(height) +
                       ":pix_fmt=" + std::to_string(AV_PIX_FMT_RGB32) + ":time_base=1/100:pixel_aspect=1/1");
    AVFilterContext* fork = add("split", "fork", "2");
    AVFilterContext* palette = add("palettegen", "palette", "stats_mode=single:reserve_transparent=0");
    // Error diffusion keeps exact colours, ordered dithering does not.
    AVFilterContext* apply = add("paletteuse", "apply", "new=1:dither=sierra2_4a");
    m_sink = add("buffersink", "out", "");
    require(library.link(m_source, 0, fork, 0));
    require(library.link(fork, 0, apply, 0));
    require(library.link(fork, 1, palette, 0));
    require(library.link(palette, 0, apply, 1));
    require(library.link(apply, 0, m_sink, 0));
    require(library.graphConfig(m_graph.get(), nullptr));
}

void PaletteReducer::push(AVFrame* frame) {
    require(filterLibrary().sourceAddFrame(m_source, frame));
}

Frame PaletteReducer::pull() {
    const FilterLibrary& library = filterLibrary();
    Frame frame = makeFrame();
    const int result = library.sinkGetFrame(m_sink, frame.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return nullptr;
    require(result);
    frame->pts = av_rescale_q(frame->pts, library.sinkGetTimeBase(m_sink), AVRational{1, 100});
    return frame;
}

}  // namespace zeb::ffmpeg
