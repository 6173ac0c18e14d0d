#pragma once

#include "media/ffmpeg/Handles.h"

struct AVFilterContext;

namespace zeb::ffmpeg {

/// Reduces pictures to 256 colours each, chosen per picture, with error diffusion. Pictures of at most 256
/// colours are unchanged.
class PaletteReducer {
public:
    /// For 32-bit pictures of this size. Throws `FilmError` if the filter library is missing.
    PaletteReducer(int width, int height);

    /// Adds a frame and takes over its contents; a null pointer marks the end.
    void push(AVFrame* frame);
    /// Returns a reduced picture with its original time; nothing if none is ready.
    Frame pull();

private:
    FilterGraph m_graph;
    AVFilterContext* m_source = nullptr;
    AVFilterContext* m_sink = nullptr;
};

}  // namespace zeb::ffmpeg
