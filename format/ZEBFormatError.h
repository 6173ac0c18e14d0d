#pragma once

#include <string>

#include "platform/PlatformError.h"

namespace zeb {

/// A file that is no ZEB file or contradicts itself. Domain "ZEB"; the description is the text that a person
/// sees.
class ZEBFormatError : public PlatformError {
public:
    enum Code { wrongMagic = 1, malformed = 999 };

    static ZEBFormatError notAMovie() { return {wrongMagic, "Kein ZEB1-File"}; }
    /// A header field lies beyond the header size.
    static ZEBFormatError headerTooShort() { return {malformed, "Header zu kurz"}; }
    /// The title's length passes the header size.
    static ZEBFormatError titleOutsideHeader() { return {malformed, "Titel außerhalb Header"}; }
    /// Fewer bytes than a size field promised.
    static ZEBFormatError unexpectedEnd() { return {malformed, "Unerwartetes EOF"}; }
    /// No block starts where the next one should.
    static ZEBFormatError endOfMovie() { return {malformed, "EOF"}; }
    /// A read without an open file.
    static ZEBFormatError noFileHandle() { return {malformed, "FileHandle nil"}; }

private:
    ZEBFormatError(Code code, const std::string& description) : PlatformError("ZEB", code, description) {}
};

}  // namespace zeb
