#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/base/Error.h"
#include "platform/files/FileHandle.h"
#include "platform/text/LocalizedText.h"

/// Writing of ordinary video files and pictures. Colours are sRGB (IEC 61966-2-1); pixels are 4 bytes each,
/// blue, green, red, alpha, rows from the top without padding.
#include "media/Media.h"

namespace zeb {

/// A video or picture that cannot be encoded on this system. Domain "Film"; the description is the English
/// text.
class FilmError : public PlatformError {
public:
    enum Code {
        noEncoder = 1,     ///< the system has none of the encoders for the format
        cannotEncode = 2,  ///< the encoder rejects the parameters (the size, for instance)
    };
    FilmError(Code code, const KeyedText& text) : PlatformError("Film", code, englishText(text), text) {}
};

enum class FilmFormat {
    mp4,       ///< for most players: visually lossless, 4:2:0, compressed sound
    matroska,  ///< lossless pictures and sound
    webm,      ///< for the web: visually lossless, 4:2:0, compressed sound
    gif,       ///< 256 colours per picture, no sound, at most 50 pictures per second
};

struct FilmParameters {
    FilmFormat format = FilmFormat::mp4;
    int width = 1;  ///< of the pictures; the video is one pixel larger if the encoder needs even sides
    int height = 1;
    int picturesPerSecond = 1;
    int soundChannels = 0;  ///< 0 = without sound; 1 or 2
    int soundRate = 20000;  ///< Hz, of the samples passed to `addSound`
    bool loops = false;     ///< the video repeats, if the format can store that (GIF)
};

/// A video file being written. Used by one thread at a time. Every operation throws `FilmError` or the file's
/// `FileError`; the writer must not be used afterwards.
class FilmWriter {
public:
    virtual ~FilmWriter() = default;

    /// Appends a picture of width x height x 4 bytes, shown for 1 / picturesPerSecond seconds. Ignores alpha.
    virtual void addPicture(std::span<const std::uint8_t> pixels) = 0;
    /// Appends sound: unsigned 8-bit samples, channels interleaved, 128 is silence. Best called once per
    /// second of pictures. Formats without sound ignore it.
    virtual void addSound(std::span<const std::uint8_t> samples) = 0;
    /// Encodes the remaining data and completes the file. Called once, at the end. `isCancelled` may be
    /// empty; if it returns true, `finish` returns early and the file is incomplete.
    virtual void finish(const std::function<bool()>& isCancelled) = 0;

    virtual std::uint64_t bytesWritten() const = 0;
    /// Returns the encoders and their parameters, for a log.
    virtual KeyedText description() const = 0;
};

/// The encoders of this system. May be called from any thread.
class FilmLibrary {
public:
    virtual ~FilmLibrary() = default;

    /// Starts a video in an empty file. The file must outlive the writer, which does not close it. Throws
    /// `FilmError`, `FileError`.
    virtual std::unique_ptr<FilmWriter> beginFilm(WritableFile& file,
                                                  const FilmParameters& parameters) const = 0;

    /// Returns a picture as the bytes of a PNG file, lossless. `pixels` are multiplied by alpha; the file has
    /// an alpha channel if a pixel is not opaque. Throws `FilmError`.
    virtual std::vector<std::uint8_t> encodePNG(std::span<const std::uint8_t> pixels, int width,
                                                int height) const = 0;
};

/// Makes the encoders based on the FFmpeg libraries. `logging` applies to the whole process.
std::unique_ptr<FilmLibrary> makeFFmpegFilmLibrary(MediaLogging logging);

}  // namespace zeb
