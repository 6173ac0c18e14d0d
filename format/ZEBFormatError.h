#pragma once

#include <string>
#include <utility>

#include "platform/base/PlatformError.h"

namespace zeb {

/// A file that is no ZEB file or contradicts itself. Domain "ZEB".
class ZEBFormatError : public PlatformError {
public:
    enum Code { wrongMagic = 1, malformed = 999 };

    static ZEBFormatError notAMovie() { return {wrongMagic, "Kein ZEB1-File", {"error_not_a_movie"}}; }
    /// A header field lies beyond the header size.
    static ZEBFormatError headerTooShort() {
        return {malformed, "Header zu kurz", {"error_header_too_short"}};
    }
    /// The title's length passes the header size.
    static ZEBFormatError titleOutsideHeader() {
        return {malformed, "Titel außerhalb Header", {"error_title_outside_header"}};
    }
    /// Fewer bytes than a size field promised.
    static ZEBFormatError unexpectedEnd() {
        return {malformed, "Unerwartetes EOF", {"error_unexpected_end"}};
    }
    /// No block starts where the next one should.
    static ZEBFormatError endOfMovie() { return {malformed, "EOF", {"error_end_of_movie"}}; }
    /// A read without an open file.
    static ZEBFormatError noFileHandle() { return {malformed, "FileHandle nil", {"error_no_file_handle"}}; }

private:
    ZEBFormatError(Code code, const std::string& description, KeyedText text)
        : PlatformError("ZEB", code, description, std::move(text)) {}
};

}  // namespace zeb
