#pragma once

#include "media/ffmpeg/Handles.h"

struct AVFilterContext;

namespace zeb::ffmpeg {

/// Converts interlaced frames to progressive ones, one for each; progressive frames pass unchanged. The
/// output is delayed by one or two frames. `pts` is in nanoseconds.
class Deinterlacer {
public:
    /// For frames of the size and format of `first`. Throws `MediaError`.
    Deinterlacer(const AVFrame& first, int threads);

    /// Returns true if the frame has the size and format of the first one.
    bool takes(const AVFrame& frame) const;
    /// Adds a frame and takes over its contents; a null pointer marks the end.
    void push(AVFrame* frame);
    /// Returns the next finished frame, or none until more frames are added.
    Frame pull();

private:
    FilterGraph m_graph;
    AVFilterContext* m_source = nullptr;  // owned by the graph
    AVFilterContext* m_sink = nullptr;
    int m_width, m_height, m_format;
};

}  // namespace zeb::ffmpeg
