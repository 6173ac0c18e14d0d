#pragma once

#include <cstdint>
#include <string>

#include "platform/files/FileHandle.h"
#include "platform/text/LocalizedText.h"

namespace zeb {

/// Errors of an export whose movie lacks the requested content. Domain "Export"; the description is the
/// English text.
class ExportError : public PlatformError {
public:
    enum Code {
        noSound = 1,
        noPicture = 2,     ///< nothing of the requested part can be decoded
        outsideMovie = 3,  ///< the movie does not have this frame or time
        tooLarge = 4,      ///< for the format
        unreadable = 5,    ///< the system refuses to read the movie
    };

    static ExportError withoutSound() { return {noSound, {"error_export_no_sound"}}; }
    static ExportError withoutPicture() { return {noPicture, {"error_export_no_picture"}}; }
    static ExportError withoutFirstPicture() { return {noPicture, {"error_export_no_first_picture"}}; }
    static ExportError undecodable(std::int64_t frame, const std::string& reason) {
        return {noPicture, {"error_export_undecodable_format", {frame, reason}}};
    }
    static ExportError outside(const TextArgument& place, std::int64_t frames, const std::string& duration) {
        const char* key =
            frames == 1 ? "error_export_outside_one_frame_format" : "error_export_outside_format";
        return {outsideMovie, {key, {place, frames, duration}}};
    }
    static ExportError soundTooLong() { return {tooLarge, {"error_export_long_sound"}}; }
    static ExportError pictureTooLarge() { return {tooLarge, {"error_export_large_picture"}}; }
    static ExportError cannotRead(const FileError& error) { return {unreadable, error.text()}; }

private:
    ExportError(Code code, const KeyedText& text) : PlatformError("Export", code, englishText(text), text) {}
};

}  // namespace zeb
