#pragma once

#include "media/ffmpeg/Handles.h"

struct AVFilterContext;

namespace zeb::ffmpeg {

/// Reduces pictures to 256 colours each, chosen per picture, with diffusion of the error; pictures of no more
/// than 256 colours stay exactly as they are.
class PaletteReducer {
public:
    /// For pictures of 32 bits in that size. Throws `FilmError` when the filter library is missing.
    PaletteReducer(int width, int height);

    /// Takes the frame's contents; nothing = the end.
    void push(AVFrame* frame);
    /// A reduced picture with its time as it came in; nothing when none is ready.
    Frame pull();

private:
    FilterGraph m_graph;
    AVFilterContext* m_source = nullptr;
    AVFilterContext* m_sink = nullptr;
};

}  // namespace zeb::ffmpeg
