#include "media/ffmpeg/FilterLibrary.h"

#include <dlfcn.h>

#include <string>

#include "media/Media.h"

namespace zeb::ffmpeg {
namespace {

class Loader {
public:
    explicit Loader(const std::string& name) : m_library(dlopen(name.c_str(), RTLD_LAZY | RTLD_LOCAL)) {
        if (m_library == nullptr) {
            throw MediaError(MediaError::cannotDecode, {"error_media_no_filters_format", {name}});
        }
    }

    template <typename Function>
    void load(Function& function, const char* name) const {
        function = reinterpret_cast<Function>(dlsym(m_library, name));
        if (function == nullptr) {
            throw MediaError(MediaError::cannotDecode, {"error_media_no_filter_function_format", {name}});
        }
    }

private:
    void* m_library;  // never unloaded
};

FilterLibrary loadLibrary() {
    const Loader loader("libavfilter.so." + std::to_string(LIBAVFILTER_VERSION_MAJOR));
    FilterLibrary library{};
    loader.load(library.getByName, "avfilter_get_by_name");
    loader.load(library.graphAlloc, "avfilter_graph_alloc");
    loader.load(library.graphConfig, "avfilter_graph_config");
    loader.load(library.graphCreateFilter, "avfilter_graph_create_filter");
    loader.load(library.graphFree, "avfilter_graph_free");
    loader.load(library.link, "avfilter_link");
    loader.load(library.sinkGetFrame, "av_buffersink_get_frame");
    loader.load(library.sinkGetTimeBase, "av_buffersink_get_time_base");
    loader.load(library.sourceAddFrame, "av_buffersrc_add_frame");
    return library;
}

}  // namespace

const FilterLibrary& FilterLibrary::get() {
    static const FilterLibrary library = loadLibrary();
    return library;
}

}  // namespace zeb::ffmpeg
