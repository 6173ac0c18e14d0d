#pragma once

#include <cstdint>
#include <string>

#include "platform/files/FileHandle.h"
#include "platform/text/LocalizedText.h"

namespace zeb {

/// A movie that cannot give what an export asks for. Domain "Export"; the description is its text in English.
class ExportError : public PlatformError {
public:
    enum Code {
        noSound = 1,
        noPicture = 2,     ///< nothing of what was asked for can be decoded
        outsideMovie = 3,  ///< a frame or time that the movie does not have
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
