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

/// Callbacks of a conversion. All except `isCancelled` are called in order on the thread that called
/// `convert`. Each may be empty.
struct ConversionCallbacks {
    /// A line for status and log, and the progress, 0 ... 1.
    std::function<void(const std::string& text, double fraction)> progress;
    /// Returns true once the conversion must stop. Called often, from several threads.
    IsCancelled isCancelled;
    /// The plan, once the source has been analysed.
    std::function<void(const ConversionPlan&)> planned;
    /// Frames encoded and bytes written so far; about once per frame.
    std::function<void(std::int64_t framesDone, std::uint64_t bytesWritten)> advanced;
    /// A line for the log that warns of something missing or replaced in the movie.
    std::function<void(const std::string& text)> warned;
};

/// Converts one source video to one ZEB file. A conversion has no global state, so several may run at once.
/// The bytes of the file depend only on the source and the settings, not on `threads` or timing.
///
/// The output must not be the input by any path or link; this is rejected before any file is changed. An
/// existing file or link at the output is set aside first, even before the input is opened, and removed when
/// the movie is complete. Any other object there is an error. Pictures are grabbed and encoded on internal
/// threads, which start after planning, work at most about two seconds ahead of the writer, and have ended
/// when `convert` returns.
///
/// The output file is created after the sound has been read. After a later failure or cancellation it keeps
/// the whole one-second blocks written so far, with an incomplete header. After any failure the caller must
/// settle `output` (`putBack`, `keepBoth`).
///
/// Throws `ZEBConverterError` (cannot create the output, no video track, cancelled), `ZEBWriterError` (beyond
/// the format's limits), `MediaError` (source), `OutputError` and `FileError` (output), `PlatformError`
/// (drawing the first frame).
class ConversionRun {
public:
    using CreateFile = std::function<std::unique_ptr<WritableFile>(OutputPlace& output)>;

    /// `threads`: number of decoder threads and of encoder threads; 0 = number of cores. `createFile` creates
    /// the output.
    explicit ConversionRun(const MediaLibrary& library, int threads = 0, CreateFile createFile = createMovie);

    void convert(const std::string& input, OutputPlace& output, const Settings& settings,
                 const ConversionCallbacks& callbacks) const;

    /// Creates the output file. Throws `ZEBConverterError::cannotCreateOutput` if the system refuses.
    static std::unique_ptr<WritableFile> createMovie(OutputPlace& output);

private:
    const MediaLibrary& m_library;
    int m_threads;
    CreateFile m_createFile;
};

}  // namespace zeb
