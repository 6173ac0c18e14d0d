#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "codec/Mode32Interpretation.h"
#include "format/ZEBHeader.h"
#include "media/FilmWriter.h"
#include "media/Media.h"
#include "platform/files/OutputPlace.h"

namespace zeb {

/// What an export makes and of which part of the movie.
struct ExportSettings {
    enum class Kind {
        picture,   ///< one PNG file
        pictures,  ///< a PNG file for every frame
        sound,     ///< a WAV file: the samples exactly as they are stored
        film,
    };
    Kind kind = Kind::film;
    FilmFormat format = FilmFormat::mp4;  ///< of a film

    /// How 16-bit pixels are read.
    Mode32Interpretation interpretation = Mode32Interpretation::rgb565LE;
    /// Every pixel becomes scale x scale equal ones. Unless told otherwise 1; but 2 for the dots of Mode 4 in
    /// films whose colours have half the resolution (MP4, WebM), which would smear them.
    std::optional<int> scale;

    /// A part of the movie in microseconds: from the frame that is on screen at `from` up to, not including,
    /// the first one that starts at `to` or later. For sound, the samples in that time.
    std::int64_t from = 0;
    std::optional<std::int64_t> to;
    /// A single frame instead, by its number from 0, or by a time in microseconds at which it is on screen.
    std::optional<std::int64_t> frame;
    std::optional<std::int64_t> at;

    OutputTerms terms;  ///< of the files that are made
};

/// What an export is going to do.
struct ExportPlan {
    ZEBHeader header;            ///< of the movie, without the index
    std::int64_t allFrames = 0;  ///< that the movie really has
    std::int64_t first = 0;      ///< frame
    std::int64_t frames = 0;     ///< that are exported; for sound, those that it belongs to
    int width = 0;               ///< of the pictures as exported
    int height = 0;
};

/// What was made.
struct ExportResult {
    ExportPlan plan;
    std::int64_t files = 1;
    std::uint64_t bytes = 0;  ///< of all files
    double seconds = 0;       ///< playing time of what was made
};

/// How an export talks back, on the thread that called it; each may be empty.
struct ExportCallbacks {
    /// A line for a log.
    std::function<void(const std::string& line)> logged;
    /// Something is not as it should be; the export goes on.
    std::function<void(const std::string& line)> warned;
    /// True once the export shall stop; asked often.
    IsCancelled isCancelled;
    std::function<void(const ExportPlan&)> planned;
    /// Frames done and bytes written so far; about once per frame.
    std::function<void(std::int64_t framesDone, std::uint64_t bytesWritten)> advanced;
};

/// Turns a ZEB movie, or a part of it, into ordinary pictures, sound or film.
///
/// Reads unfinished and damaged movies as far as they go: a frame that cannot be decoded repeats the one
/// before it (black, if there is none) with a warning; a single picture of such a frame is an error. Pictures
/// of a film have the size of its first one; others are cut or filled with black. Sound of a second that is
/// too short for a film is filled with silence, too long is cut.
///
/// The output appears under its name when it is complete, and only then replaces what stood there; after a
/// failure or cancellation nothing is left. Whether it is the input is for the caller to find out.
///
/// Throws `ZEBConverterError` (cancelled), `ZEBFormatError` (no movie), `ExportError`, `FilmError`,
/// `OutputError` and `FileError` (output).
class ExportRun {
public:
    explicit ExportRun(const FilmLibrary& library) : m_library(library) {}

    /// `output` is a file; for `Kind::pictures` its last part is a `NumberedName`, which gets the frames'
    /// numbers in the movie.
    ExportResult run(const std::string& input, const std::string& output, const ExportSettings& settings,
                     const ExportCallbacks& callbacks) const;

private:
    const FilmLibrary& m_library;
};

}  // namespace zeb
