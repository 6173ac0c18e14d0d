#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "conversion/look/FrameRecipe.h"
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
    /// Length of the part over which the samples are spread. Empty: the length of the asset.
    std::optional<double> movieSeconds{};
    double startSeconds = 0;  ///< start of the part
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

/// Record sizes of the sample pictures of a video, for forecasts in Mode 32. Keeps the pictures, so that
/// another recipe only requires drawing and encoding. Caches the sizes for the latest recipes. Used
/// by one thread at a time.
class RecordSamples {
public:
    /// `pictures` in the order of the video, at least one; `threads`: encoder threads.
    explicit RecordSamples(std::vector<std::shared_ptr<const Picture>> pictures, int threads = 1);

    /// Returns the sizes of records made by `recipe`, in the order of the pictures. Omits pictures that
    /// cannot be drawn. Throws `MediaError::interrupted` on cancellation, and the error of a picture if none
    /// can be drawn.
    const std::vector<std::uint64_t>& at(const FrameRecipe& recipe, const IsCancelled& isCancelled);

    /// Returns the number of pictures without immediate repetitions. A repeated picture is encoded once.
    int distinctPictures() const { return m_distinctPictures; }

private:
    std::vector<std::uint64_t> encode(const FrameRecipe& recipe, const IsCancelled& isCancelled) const;

    std::vector<std::shared_ptr<const Picture>> m_pictures;
    int m_threads;
    int m_distinctPictures = 0;
    std::list<std::pair<FrameRecipe, std::vector<std::uint64_t>>> m_known;
};

}  // namespace zeb
