#pragma once

#include "media/ffmpeg/Handles.h"
#include "platform/base/Error.h"
#include "platform/base/KeyedText.h"

namespace zeb::ffmpeg {

/// Returns the error for a picture that cannot be drawn.
PlatformError cannotDraw(const TextArgument& reason);

/// Converts decoded frames to the form that the scaler reads: one component per plane, native byte order,
/// aligned, sides multiples of the chroma subsampling (the last column or row is repeated). Most decoders
/// deliver this form, which is not copied. Used by one thread at a time.
class PlanarForm {
public:
    /// Returns the frame itself if it has the form, else a converted copy that is valid until the next call.
    /// Throws `PlatformError` for a pixel format that cannot be converted.
    const AVFrame& of(const AVFrame& frame);

private:
    const AVFrame& converted(const AVFrame& frame, int format);
    const AVFrame& padded(const AVFrame& frame);

    Converter m_converter;
    Frame m_converted;
    Frame m_padded;
};

}  // namespace zeb::ffmpeg
