#pragma once

#include <cstdint>
#include <string>

#include "platform/PlatformError.h"

namespace zeb {

/// A movie that cannot give what an export asks for. Domain "Export"; the description is the text that a
/// person sees.
class ExportError : public PlatformError {
public:
    enum Code {
        noSound = 1,
        noPicture = 2,     ///< nothing of what was asked for can be decoded
        outsideMovie = 3,  ///< a frame or time that the movie does not have
        tooLarge = 4,      ///< for the format
        unreadable = 5,    ///< the system refuses to read the movie
    };

    static ExportError withoutSound() { return {noSound, "The movie has no sound"}; }
    static ExportError withoutPicture() { return {noPicture, "None of its pictures can be decoded"}; }
    static ExportError undecodable(std::int64_t frame, const std::string& reason) {
        return {noPicture, "Frame " + std::to_string(frame) + " cannot be decoded (" + reason + ")"};
    }
    static ExportError outside(const std::string& what, std::int64_t frames, const std::string& duration) {
        return {outsideMovie, "There is nothing at " + what + ": the movie has " + std::to_string(frames) +
                                  (frames == 1 ? " frame" : " frames") + " (" + duration + ")"};
    }
    static ExportError soundTooLong() { return {tooLarge, "The sound is too long for a WAV file (4 GiB)"}; }
    static ExportError pictureTooLarge() { return {tooLarge, "The enlarged pictures would be too large"}; }
    static ExportError cannotRead(const std::string& systemText) { return {unreadable, systemText}; }

private:
    ExportError(Code code, const std::string& description) : PlatformError("Export", code, description) {}
};

}  // namespace zeb
