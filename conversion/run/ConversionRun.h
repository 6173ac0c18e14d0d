#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/Settings.h"
#include "media/Media.h"
#include "platform/files/FileHandle.h"
#include "platform/files/OutputPlace.h"

namespace zeb {

/// How a run talks back. All but `isCancelled` are called on the thread that called `convert`, in order; each
/// may be empty.
struct ConversionCallbacks {
    /// A line for status and log, and how far the run is, 0 ... 1.
    std::function<void(const std::string& text, double fraction)> progress;
    /// True once the run shall stop; asked often, from several threads.
    IsCancelled isCancelled;
    /// The plan, once the source has been analysed.
    std::function<void(const ConversionPlan&)> planned;
    /// Frames encoded and bytes written so far; about once per frame.
    std::function<void(std::int64_t framesDone, std::uint64_t bytesWritten)> advanced;
    /// A line for the log that warns of something missing or replaced in the movie.
    std::function<void(const std::string& text)> warned;
};

/// Turns one source video into one ZEB file. A run has no state outside its own variables; several may go on
/// at once. The bytes of the file depend on the source and the settings only, not on `threads` or timing.
///
/// The output must not be the input by any path or link: that is refused before anything is touched. A file
/// or link at the output is set aside first, even before the input is opened, and removed when the movie is
/// complete; anything else there is an error. Inside, pictures are grabbed and encoded on threads of their
/// own, at most about two seconds ahead of what is written, from the moment the plan stands; they are all
/// gone when `convert` returns.
///
/// The output exists from the moment the sound has been read. On failure or cancellation after that it stays
/// as far as it was written: whole one-second blocks, header not completed. After any failure the caller ends
/// the work on `output` (`putBack`, `keepBoth`).
///
/// Throws `ZEBConverterError` (cannot create the output, no video track, cancelled), `ZEBWriterError` (beyond
/// the format's limits), `MediaError` (source), `OutputError` and `FileError` (output), `PlatformError`
/// (drawing the first frame).
class ConversionRun {
public:
    using CreateFile = std::function<std::unique_ptr<WritableFile>(OutputPlace& output)>;

    /// `threads`: how many the decoder and the encoders may each use; 0 = as many as the machine has cores.
    /// `createFile` makes the output.
    explicit ConversionRun(const MediaLibrary& library, int threads = 0, CreateFile createFile = createMovie);

    void convert(const std::string& input, OutputPlace& output, const Settings& settings,
                 const ConversionCallbacks& callbacks) const;

    /// Creates the file at its place. Where the system refuses that: `ZEBConverterError::cannotCreateOutput`.
    static std::unique_ptr<WritableFile> createMovie(OutputPlace& output);

private:
    const MediaLibrary& m_library;
    int m_threads;
    CreateFile m_createFile;
};

}  // namespace zeb
