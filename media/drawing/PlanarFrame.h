#pragma once

#include "media/ffmpeg/Handles.h"
#include "platform/base/Error.h"
#include "platform/base/KeyedText.h"

namespace zeb::ffmpeg {

/// The error of a picture that cannot be drawn, with the reason.
PlatformError cannotDraw(const TextArgument& reason);

/// Brings decoded frames into the form that the scaler reads: one component per plane, native byte order,
/// aligned, sides whole multiples of the chroma subsampling (by repeating the last column or row). Most
/// decoders deliver that form, and then nothing is copied. Used by one thread at a time.
class PlanarForm {
public:
    /// The frame itself where it fits, else a converted copy that is valid until the next call.
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
