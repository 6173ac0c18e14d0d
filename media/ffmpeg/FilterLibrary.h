#pragma once

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {

/// The functions of libavfilter, loaded for the first interlaced video. The library depends on about thirty
/// others, which would make every start of the program slower and larger. Only for .cpp files.
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

    /// Loads the library on the first call; it stays loaded until the process ends. May be called from any
    /// thread. Throws `MediaError::cannotDecode` if the library is not installed.
    static const FilterLibrary& get();
};

}  // namespace zeb::ffmpeg
