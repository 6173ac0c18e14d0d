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

/// The kind of output of an export and the part of the movie to export.
struct ExportSettings {
    enum class Kind {
        picture,   ///< one PNG file
        pictures,  ///< a PNG file for every frame
        sound,     ///< a WAV file: the samples exactly as they are stored
        film,
    };
    Kind kind = Kind::film;
    FilmFormat format = FilmFormat::mp4;  ///< only for `Kind::film`

    /// How 16-bit pixels are interpreted.
    Mode32Interpretation interpretation = Mode32Interpretation::rgb565LE;
    /// Every pixel becomes scale x scale equal pixels. The default is 1, but 2 for Mode 4 in videos whose
    /// colours have half the resolution (MP4, WebM), because the subsampling would smear the dither dots.
    std::optional<int> scale;

    /// The exported part in microseconds: from the frame on screen at `from` up to, but not including, the
    /// first frame that starts at or after `to`. For sound, the samples in that time.
    std::int64_t from = 0;
    std::optional<std::int64_t> to;
    /// A single frame: by its number from 0, or by a time in microseconds at which it is on screen.
    std::optional<std::int64_t> frame;
    std::optional<std::int64_t> at;

    OutputTerms terms;  ///< how output files are created
};

/// Facts about an export that are fixed before its first output byte.
struct ExportPlan {
    ZEBHeader header;            ///< of the movie, without the index
    std::int64_t allFrames = 0;  ///< actual number of frames in the movie
    std::int64_t first = 0;      ///< number of the first exported frame
    std::int64_t frames = 0;     ///< exported frames; for sound, the frames that it belongs to
    int width = 0;               ///< of the exported pictures
    int height = 0;
};

/// Facts about a finished export.
struct ExportResult {
    ExportPlan plan;
    std::int64_t files = 1;
    std::uint64_t bytes = 0;  ///< of all files
    double seconds = 0;       ///< playing time of the exported part
};

/// Callbacks of an export, called on the thread that called `run`. Each may be empty.
struct ExportCallbacks {
    /// A line for a log.
    std::function<void(const std::string& line)> logged;
    /// A line about a problem that does not end the export.
    std::function<void(const std::string& line)> warned;
    /// Returns true once the export must stop. Called often.
    IsCancelled isCancelled;
    std::function<void(const ExportPlan&)> planned;
    /// Frames done and bytes written so far; about once per frame.
    std::function<void(std::int64_t framesDone, std::uint64_t bytesWritten)> advanced;
};

/// Converts a ZEB movie, or a part of it, to standard pictures, sound or video.
///
/// Reads unfinished and damaged movies as far as possible. A frame that cannot be decoded is replaced by the
/// previous frame, or by a black one without a previous frame, with a warning. If the export is a single
/// picture, such a frame is an error. Pictures of a video have the size of its first picture; others are
/// cropped or padded with black. In a video, the sound of each second is padded with silence or cut to fit.
///
/// The output gets its final name, and replaces an existing file, only when it is complete. After a failure
/// or cancellation no output remains. The caller must check that the output is not the input.
///
/// Throws `ZEBConverterError` (cancelled), `ZEBFormatError` (not a movie), `ExportError`, `FilmError`,
/// `OutputError` and `FileError` (output).
class ExportRun {
public:
    explicit ExportRun(const FilmLibrary& library) : m_library(library) {}

    /// `output` is a file path. For `Kind::pictures` its last part is a `NumberedName`; the frame number in
    /// the movie replaces the placeholder.
    ExportResult run(const std::string& input, const std::string& output, const ExportSettings& settings,
                     const ExportCallbacks& callbacks) const;

private:
    const FilmLibrary& m_library;
};

}  // namespace zeb
