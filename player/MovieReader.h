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

/// Reads a movie for a player; the contract is that of `ZEBReader`. Used by one thread at a time, except
/// `readAllAudio`, which may run concurrently.
class MovieReader {
public:
    virtual ~MovieReader() = default;

    virtual const ZEBHeader& readHeader() = 0;
    virtual std::optional<FrameImage> nextFrame(bool loop) = 0;
    virtual void seekToFrame(std::int64_t frame) = 0;
    virtual void setMode32Interpretation(Mode32Interpretation value) = 0;
    virtual Soundtrack readAllAudio() = 0;
};

/// Creates the reader of a movie without opening the file.
using MakeMovieReader = std::function<std::unique_ptr<MovieReader>(const std::string& path)>;

/// Creates a reader for a file.
std::unique_ptr<MovieReader> makeFileMovieReader(const std::string& path);

}  // namespace zeb
