#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "media/Media.h"

namespace zeb {

/// Limits for the work spent on sample pictures.
struct SamplingEffort {
    int pictures = 12;  ///< upper limit; lower for large pictures, to keep them within about 300 MB
    /// Maximum number of decoded pictures per sample. Key pictures are often coded with more or with less
    /// detail than the others. The further a sample is from its key picture, the closer it is to the average.
    int decodedPictures = 24;
    /// Seconds of video to decode in addition, used when several samples are the same picture because key
    /// pictures are far apart.
    double decodedSeconds = 20;
    int threads = 1;  ///< decoder threads
    /// Length of the movie over which the samples are spread. Empty: the length of the asset.
    std::optional<double> movieSeconds{};
};

/// Returns pictures spread evenly over a video, in order. A sample may be near its nominal time if that saves
/// work. Pictures that cannot be decoded are omitted. The result is deterministic for a given video and
/// effort.
///
/// Throws `MediaError`: `cannotDecode` when no picture can be decoded, `interrupted` on cancellation,
/// `cannotRead`.
std::vector<std::shared_ptr<const Picture>> samplePictures(const MediaAsset& asset,
                                                           const SamplingEffort& effort,
                                                           const IsCancelled& isCancelled);

}  // namespace zeb
