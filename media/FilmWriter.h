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

/// Writing of ordinary films and pictures. Colours are sRGB (IEC 61966-2-1); pixels are 4 bytes each, blue,
/// green, red, alpha, rows from the top without padding.
namespace zeb {

/// A film or picture that cannot be encoded on this system. Domain "Film"; the description is its text in
/// English.
class FilmError : public PlatformError {
public:
    enum Code {
        noEncoder = 1,     ///< the system has none of the encoders that the format could be made with
        cannotEncode = 2,  ///< the encoder refuses (the size, for instance)
    };
    FilmError(Code code, const KeyedText& text) : PlatformError("Film", code, englishText(text), text) {}
};

enum class FilmFormat {
    mp4,       ///< what most players take: visually lossless, 4:2:0, compressed sound
    matroska,  ///< every pixel and sample exactly
    webm,      ///< for the web: visually lossless, 4:2:0, compressed sound
    gif,       ///< 256 colours per picture, no sound, no more than 50 pictures per second
};

struct FilmParameters {
    FilmFormat format = FilmFormat::mp4;
    int width = 1;  ///< of the pictures; the film's own sides may be one pixel longer where they must be even
    int height = 1;
    int picturesPerSecond = 1;
    int soundChannels = 0;  ///< 0 = without sound; 1 or 2
    int soundRate = 20000;  ///< Hz, of the samples that are handed over
    bool loops = false;     ///< play again and again, where the format can say so (GIF)
};

/// A film being written. Used by one thread at a time. Every operation throws `FilmError`, or the file's
/// `FileError`, after which the film is of no use.
class FilmWriter {
public:
    virtual ~FilmWriter() = default;

    /// The next picture, width x height x 4 bytes; shown for 1 / picturesPerSecond seconds. Alpha is not
    /// regarded.
    virtual void addPicture(std::span<const std::uint8_t> pixels) = 0;
    /// More sound: unsigned 8-bit samples, channels interleaved, 128 is silence. Best handed over a second
    /// at a time together with its pictures. Formats without sound ignore it.
    virtual void addSound(std::span<const std::uint8_t> samples) = 0;
    /// Encodes what is left and completes the file. To be called once, at the end. Returns early, with a film
    /// of no use, when `isCancelled`, which may be empty, answers true.
    virtual void finish(const std::function<bool()>& isCancelled) = 0;

    virtual std::uint64_t bytesWritten() const = 0;
    /// How it is encoded, for a log.
    virtual KeyedText description() const = 0;
};

/// The encoders of this system. Callable from any thread.
class FilmLibrary {
public:
    virtual ~FilmLibrary() = default;

    /// Begins a film in an empty file, which must outlive the writer and is not closed by it. Throws
    /// `FilmError`, `FileError`.
    virtual std::unique_ptr<FilmWriter> beginFilm(WritableFile& file,
                                                  const FilmParameters& parameters) const = 0;

    /// A picture as the bytes of a PNG file, exactly. `pixels` are multiplied by alpha; the file has an alpha
    /// channel when a pixel is not opaque. Throws `FilmError`.
    virtual std::vector<std::uint8_t> encodePNG(std::span<const std::uint8_t> pixels, int width,
                                                int height) const = 0;
};

}  // namespace zeb
