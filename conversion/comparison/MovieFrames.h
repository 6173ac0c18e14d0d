#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "codec/FrameDecoder.h"
#include "format/check/MovieFacts.h"
#include "format/walk/SecondWalker.h"
#include "media/Media.h"

namespace zeb {

/// The pictures of a movie by their numbers, in unfinished and damaged movies as far as they can be found.
/// Used by one thread at a time.
class MovieFrames {
public:
    /// Reads the header and counts the frames. Throws `ZEBFormatError` (not a movie), `ExportError` (cannot
    /// be read) and `ZEBConverterError` (cancelled), as does `at`.
    MovieFrames(const std::string& path, const IsCancelled& isCancelled);

    /// Without the index.
    const ZEBHeader& header() const { return m_walker.header(); }
    /// Returns the number of frames to play; 0 for a movie without a whole second.
    std::int64_t count() const { return m_count; }

    /// Returns frame `index`, which is not negative: R, G, B, A instead of the decoder's order. Returns
    /// nothing if its record is missing or cannot be decoded.
    std::optional<FrameImage> at(std::int64_t index);

private:
    SecondWalker m_walker;
    std::int64_t m_count;
    std::optional<SecondWalker::Second> m_second;  ///< the latest one, usually of the next frame, too
    std::vector<std::uint8_t> m_record;
    FrameDecoder m_decoder;
};

}  // namespace zeb
