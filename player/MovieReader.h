#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "codec/FrameDecoder.h"
#include "codec/Mode32Interpretation.h"
#include "format/ZEBHeader.h"
#include "format/ZEBReader.h"

namespace zeb {

/// A movie as a player reads it; the contract is `ZEBReader`'s. One thread at a time, but for `readAllAudio`,
/// which may run meanwhile.
class MovieReader {
public:
    virtual ~MovieReader() = default;

    virtual const ZEBHeader& readHeader() = 0;
    virtual std::optional<FrameImage> nextFrame(bool loop) = 0;
    virtual void seekToFrame(std::int64_t frame) = 0;
    virtual void setMode32Interpretation(Mode32Interpretation value) = 0;
    virtual Soundtrack readAllAudio() = 0;
};

/// Makes the reader of a movie; opens nothing yet.
using MakeMovieReader = std::function<std::unique_ptr<MovieReader>(const std::string& path)>;

/// The reader of a file.
std::unique_ptr<MovieReader> makeFileMovieReader(const std::string& path);

}  // namespace zeb
