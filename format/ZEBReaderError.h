#pragma once

#include <string>
#include <utility>

#include "platform/base/PlatformError.h"

namespace zeb {

/// A file whose soundtrack cannot be read. Domain "ZEBReader".
class ZEBReaderError : public PlatformError {
public:
    /// Fewer bytes than a size field promised.
    static ZEBReaderError unexpectedEnd() { return {1, "Unexpected EOF", {"error_unexpected_end"}}; }
    /// One to three bytes where a 32-bit value should be.
    static ZEBReaderError truncatedWord() { return {2, "Truncated u32", {"error_truncated_word"}}; }
    /// Nothing where a 32-bit value must be.
    static ZEBReaderError missingWord() { return {3, "Unexpected EOF", {"error_unexpected_end"}}; }
    static ZEBReaderError notAMovie() { return {4, "Not a ZEB1 file", {"error_not_a_movie"}}; }

private:
    ZEBReaderError(int code, const std::string& description, KeyedText text)
        : PlatformError("ZEBReader", code, description, std::move(text)) {}
};

}  // namespace zeb
