#pragma once

#include <memory>
#include <vector>

#include "platform/Media.h"

namespace zeb {

/// How much may be spent on sample pictures.
struct SamplingEffort {
    int pictures = 12;  ///< at most; fewer of very large pictures, so that they take no more than about 300 MB
    /// Where several pictures would be the same because key pictures are far apart: seconds of the film that
    /// may be decoded to reach others.
    double decodedSeconds = 20;
    int threads = 1;  ///< of the decoder
};

/// Pictures spread evenly over a film of `duration` seconds, in its order: key pictures near the wanted
/// moments, as far as there are enough of them. A picture that cannot be decoded is left out; where key
/// pictures cannot be had at all, others stand in. The same film and effort give the same pictures.
///
/// Throws `MediaError`: `cannotDecode` when no picture can be decoded, `interrupted` on cancellation.
std::vector<std::shared_ptr<const Picture>> samplePictures(const MediaAsset& asset,
                                                           const SamplingEffort& effort,
                                                           const IsCancelled& isCancelled);

}  // namespace zeb
