#pragma once

#include "media/ffmpeg/Handles.h"

struct AVFilterContext;

namespace zeb::ffmpeg {

/// Makes whole pictures of interlaced frames, one for each; progressive ones pass unchanged. Frames come out
/// one or two later than they went in. Their `pts` count nanoseconds.
class Deinterlacer {
public:
    /// For frames like `first`. Throws `MediaError`.
    Deinterlacer(const AVFrame& first, int threads);

    /// Whether frames like this one go in.
    bool takes(const AVFrame& frame) const;
    /// Takes the frame's contents; without one, the end.
    void push(AVFrame* frame);
    /// The next finished frame, or none until more is pushed.
    Frame pull();

private:
    FilterGraph m_graph;
    AVFilterContext* m_source = nullptr;  // owned by the graph
    AVFilterContext* m_sink = nullptr;
    int m_width, m_height, m_format;
};

}  // namespace zeb::ffmpeg
