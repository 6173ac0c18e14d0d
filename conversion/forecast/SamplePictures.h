#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "media/Media.h"

namespace zeb {

/// How much may be spent on sample pictures.
struct SamplingEffort {
    int pictures = 12;  ///< at most; fewer of very large ones, so that they take no more than about 300 MB
    /// How many pictures may be decoded for one of them. Key pictures themselves are often coded with more
    /// detail than the others, or with less: the further from them, the more like the average.
    int decodedPictures = 24;
    /// Where several would still be the same because key pictures are far apart: seconds of the film that may
    /// be decoded to reach others.
    double decodedSeconds = 20;
    int threads = 1;  ///< of the decoder
    /// The movie's length, over which the pictures are spread; as long as the asset where it is not known.
    std::optional<double> movieSeconds{};
};

/// Pictures spread evenly over a film, in its order: near the wanted moments where that saves work. A picture
/// that cannot be decoded is left out. The same film and effort give the same pictures.
///
/// Throws `MediaError`: `cannotDecode` when no picture can be decoded, `interrupted` on cancellation,
/// `cannotRead`.
std::vector<std::shared_ptr<const Picture>> samplePictures(const MediaAsset& asset,
                                                           const SamplingEffort& effort,
                                                           const IsCancelled& isCancelled);

}  // namespace zeb
