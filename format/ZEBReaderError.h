#pragma once

#include <string>

#include "platform/PlatformError.h"

namespace zeb {

/// A file whose soundtrack cannot be read. Domain "ZEBReader".
class ZEBReaderError : public PlatformError {
public:
    /// Fewer bytes than a size field promised.
    static ZEBReaderError unexpectedEnd() { return {1, "Unexpected EOF"}; }
    /// One to three bytes where a 32-bit value should be.
    static ZEBReaderError truncatedWord() { return {2, "Truncated u32"}; }
    /// Nothing where a 32-bit value must be.
    static ZEBReaderError missingWord() { return {3, "Unexpected EOF"}; }
    static ZEBReaderError notAMovie() { return {4, "Not a ZEB1 file"}; }

private:
    ZEBReaderError(int code, const std::string& description)
        : PlatformError("ZEBReader", code, description) {}
};

}  // namespace zeb
