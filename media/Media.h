#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/base/Error.h"
#include "platform/base/Picture.h"
#include "platform/text/LocalizedText.h"

/// Reading of video files: the tracks of an asset, the pictures of its video track and the samples of its
/// sound tracks.
namespace zeb {

/// A file that cannot be opened or decoded as a video. Domain "Media". The description is the English text;
/// it does not contain the path of the file.
class MediaError : public PlatformError {
public:
    enum Code {
        cannotOpen = 1,    ///< missing, unreadable, a folder, empty, not a media file, a rejected format
        cannotDecode = 2,  ///< a picture or sound of the file could not be decoded
        interrupted = 3,   ///< the caller's `isCancelled` returned true during a read
        cannotRead = 4,    ///< a read failed, or the file has become shorter since it was opened
    };
    MediaError(Code code, const KeyedText& text) : PlatformError("Media", code, englishText(text), text) {}

    static MediaError wasInterrupted() { return {interrupted, {"error_cancelled"}}; }

    /// True if no later picture or sound can be read either.
    bool endsReading() const { return code() != cannotDecode; }
};

/// Called between units of work, from any thread; returns true to stop.
using IsCancelled = std::function<bool()>;

/// A time in the presentation: `value` / `timescale` seconds after its start.
struct MediaTime {
    std::int64_t value = 0;
    std::int32_t timescale = 1;

    /// Returns the multiple of 1 / `preferredTimescale` that is nearest to `seconds`.
    static MediaTime withSeconds(double seconds, std::int32_t preferredTimescale);
    double seconds() const { return static_cast<double>(value) / timescale; }
};

/// A width and a height that may be fractions.
struct MediaSize {
    double width = 0;
    double height = 0;
};

/// The linear part of an affine map of the plane: (x, y) -> (a x + c y, b x + d y).
struct AffineTransform {
    double a = 1, b = 0, c = 0, d = 1;

    MediaSize apply(MediaSize size) const {
        return {a * size.width + c * size.height, b * size.width + d * size.height};
    }
};

/// The end of a track, in seconds from presentation time 0.
struct TrackEnd {
    double time = 0;  ///< end of the last picture or sample in the file; 0 for an empty track
    /// The end that the file states, if the track ends more than a second before it.
    std::optional<double> stated{};

    bool operator==(const TrackEnd&) const = default;
};

struct VideoTrack {
    MediaSize naturalSize;               ///< before the transform, in square pixels (sample aspect applied)
    AffineTransform preferredTransform;  ///< rotates and mirrors the pictures upright
    float nominalFrameRate = 0;          ///< pictures per second; 0 when unknown
    TrackEnd end{};                      ///< of the pictures
};

struct SoundTrack {
    std::optional<double> sampleRate;  ///< Hz
    std::optional<int> channelsPerFrame;
    std::optional<std::uint32_t> formatCode;  ///< four-character code of the coding, first character highest
    TrackEnd end{};                           ///< of the sound
};

/// Grab times at regular distance: t(i) = min((first + i) / perSecond, last) for i = 0 ... count - 1.
struct GrabSchedule {
    std::int64_t count = 0;
    std::int64_t perSecond = 1;
    double last = 0;
    std::int64_t first = 0;

    MediaTime at(std::int64_t index) const;
};

/// A picture and its display time, in seconds from the start of the presentation.
struct TimedPicture {
    double time = 0;
    std::shared_ptr<const Picture> picture;
};

/// Grabs the pictures of the first video track. Used by one thread at a time.
class ImageGenerator {
public:
    virtual ~ImageGenerator() = default;

    /// Announces that every later grab uses a time of `schedule`, in ascending order, so that other pictures
    /// need not be decoded. Does not change the grabbed pictures.
    virtual void expect(const GrabSchedule& schedule) = 0;

    /// Returns the picture on screen at `time`: the last one whose display time is not after it, with a
    /// tolerance for times rounded by the container. Before the first picture returns the first one, after
    /// the last picture the last one. The same picture is the same object. Ascending times decode forwards; a
    /// jump far ahead or back seeks.
    ///
    /// Throws `MediaError::cannotDecode` if this picture is damaged (later grabs may succeed),
    /// `MediaError::interrupted` on cancellation, `MediaError::cannotRead`.
    virtual std::shared_ptr<const Picture> copyImage(MediaTime time) = 0;

    /// Returns a picture near `time` that is cheap to decode, for samples. Starts at the last key frame at or
    /// before `time`, decodes up to `pictures` pictures (at least 1) and returns the last one not after
    /// `time`. If the container has no such key frame, starts at the next one. A source that cannot seek is
    /// read up to `time`; it returns key frames only, and finds the nearest one only if times ascend. Two
    /// consecutive calls that find the same picture may return the same object, which is not the object of
    /// `copyImage`.
    ///
    /// Ends the effect of `expect`; does not change later pictures of `copyImage`. Throws
    /// `MediaError::cannotDecode` if there is no such picture or it is damaged, `MediaError::interrupted` on
    /// cancellation, `MediaError::cannotRead`.
    virtual TimedPicture copyNearbyImage(MediaTime time, int pictures) = 0;
};

/// A piece of decoded sound.
struct SampleBuffer {
    double sampleRate = 0;           ///< Hz; positive, at most 2^31 - 1
    int channelsPerFrame = 0;        ///< at least 1
    std::span<const float> samples;  ///< interleaved, nominally -1 ... 1; valid until the next call
};

/// Reads one sound track from presentation time 0 on. A late start and gaps longer than 20 ms become silence;
/// sound before time 0 is left out. Rate and channels are the same in all buffers: if they change within the
/// track, later sound is converted to the first format. Used by one thread at a time.
class SoundReader {
public:
    virtual ~SoundReader() = default;

    /// Returns false if the track cannot be decoded on this system.
    virtual bool startReading() = 0;
    /// Returns the next samples, whole sample frames; nothing at the end (a damaged file may end early).
    /// Throws `MediaError::interrupted` on cancellation, `MediaError::cannotRead`.
    virtual std::optional<SampleBuffer> copyNextSampleBuffer() = 0;
};

/// An opened video file. Readers made from it are independent, may be used on different threads and may
/// outlive it. If timestamps restart within the file (concatenated recordings), the next part starts when all
/// pictures and sound before it have ended.
class MediaAsset {
public:
    virtual ~MediaAsset() = default;

    /// The video tracks without cover art, the container's default track first.
    virtual const std::vector<VideoTrack>& videoTracks() const = 0;
    virtual const std::vector<SoundTrack>& soundTracks() const = 0;
    /// Length of the presentation in seconds: the latest end of the first video track and of all sound
    /// tracks; 0 for an empty presentation.
    double duration() const;
    /// Makes a generator for the first video track; there must be one. `threads` is the maximum number of
    /// decoder threads, at least 1. Throws `MediaError::cannotRead` if the file has become shorter since it
    /// was opened.
    virtual std::unique_ptr<ImageGenerator> makeImageGenerator(int threads,
                                                               IsCancelled isCancelled) const = 0;
    /// Makes a reader for a sound track. Throws `MediaError::cannotRead` for the same reason.
    virtual std::unique_ptr<SoundReader> makeSoundReader(std::size_t track,
                                                         IsCancelled isCancelled) const = 0;
};

/// Opens video files.
class MediaLibrary {
public:
    virtual ~MediaLibrary() = default;

    /// Opens a local regular file. `path` is never interpreted as a URL or a pattern. Formats that refer to
    /// other files (playlists, concatenation scripts, picture sequences) are rejected. Throws `MediaError`.
    virtual std::shared_ptr<const MediaAsset> open(const std::string& path,
                                                   IsCancelled isCancelled) const = 0;
};

/// Destination of the FFmpeg libraries' log messages.
enum class MediaLogging {
    silent,   ///< dropped
    verbose,  ///< standard error
};

/// Makes the media library based on the FFmpeg libraries. `logging` applies to the whole process.
std::unique_ptr<MediaLibrary> makeFFmpegMediaLibrary(MediaLogging logging);

}  // namespace zeb
