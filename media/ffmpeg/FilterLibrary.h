#pragma once

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {

/// The functions of libavfilter, loaded when the first interlaced film asks for them: the library brings some
/// thirty others along, which every start of the program would pay for in time and memory. Only for .cpp
/// files.
struct FilterLibrary {
    decltype(&::avfilter_get_by_name) getByName;
    decltype(&::avfilter_graph_alloc) graphAlloc;
    decltype(&::avfilter_graph_config) graphConfig;
    decltype(&::avfilter_graph_create_filter) graphCreateFilter;
    decltype(&::avfilter_graph_free) graphFree;
    decltype(&::avfilter_link) link;
    decltype(&::av_buffersink_get_frame) sinkGetFrame;
    decltype(&::av_buffersink_get_time_base) sinkGetTimeBase;
    decltype(&::av_buffersrc_add_frame) sourceAddFrame;

    /// Stays loaded to the end of the process. Usable from any thread. Throws `MediaError::cannotDecode` when
    /// the library is not installed.
    static const FilterLibrary& get();
};

}  // namespace zeb::ffmpeg
