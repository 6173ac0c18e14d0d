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

/// Reading of video files: what an asset is, the pictures of its video track and the samples of its sound
/// tracks.
namespace zeb {

/// A file that cannot be opened or decoded as a video. Domain "Media". The description says what is wrong,
/// without the path of the file (the caller knows which file it asked for). The description is its text in
/// English.
class MediaError : public PlatformError {
public:
    enum Code {
        cannotOpen = 1,    ///< missing, unreadable, a folder, empty, not a media file, a refused format
        cannotDecode = 2,  ///< a picture or sound that should be there could not be decoded
        interrupted = 3,   ///< the caller's `isCancelled` answered true while the file was being read
        cannotRead = 4,  ///< the system failed to read on, or the file has become shorter since it was opened
    };
    MediaError(Code code, const KeyedText& text) : PlatformError("Media", code, englishText(text), text) {}

    static MediaError wasInterrupted() { return {interrupted, {"error_cancelled"}}; }

    /// Nothing more can be read: no later picture or sound will do better.
    bool endsReading() const { return code() != cannotDecode; }
};

/// Asked between units of work, from any thread: true once the caller wants to stop.
using IsCancelled = std::function<bool()>;

/// A moment in the presentation: `value` / `timescale` seconds after its start.
struct MediaTime {
    std::int64_t value = 0;
    std::int32_t timescale = 1;

    /// The moment nearest to `seconds` that the timescale can express.
    static MediaTime withSeconds(double seconds, std::int32_t preferredTimescale);
    double seconds() const { return static_cast<double>(value) / timescale; }
};

/// A width and a height that need not be whole.
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

/// Where a track ends, in seconds from presentation time 0.
struct TrackEnd {
    double time = 0;  ///< of the last picture or sample that the file holds; 0 when there is none
    /// The end that the file states for the track, where the track breaks off more than a second before it.
    std::optional<double> stated{};

    bool operator==(const TrackEnd&) const = default;
};

struct VideoTrack {
    MediaSize naturalSize;               ///< before the transform, in square pixels (sample aspect applied)
    AffineTransform preferredTransform;  ///< makes the pictures upright
    float nominalFrameRate = 0;          ///< pictures per second; 0 when unknown
    TrackEnd end{};                      ///< of the pictures
};

struct SoundTrack {
    std::optional<double> sampleRate;         ///< Hz
    std::optional<int> channelsPerFrame;      ///<
    std::optional<std::uint32_t> formatCode;  ///< four-character code of the coding, first character highest
    TrackEnd end{};                           ///< of the sound
};

/// Grab times at regular distance: t(i) = min(i / perSecond, last) for i = 0 ... count - 1.
struct GrabSchedule {
    std::int64_t count = 0;
    std::int64_t perSecond = 1;
    double last = 0;

    MediaTime at(std::int64_t index) const;
};

/// A picture and when it is shown, in seconds from the start of the presentation.
struct TimedPicture {
    double time = 0;
    std::shared_ptr<const Picture> picture;
};

/// Grabs the pictures of the first video track. Used by one thread at a time.
class ImageGenerator {
public:
    virtual ~ImageGenerator() = default;

    /// Announces that every later grab will ask for a time of `schedule`, in ascending order, so that
    /// pictures which none of them shows need not be decoded. Changes no grabbed picture.
    virtual void expect(const GrabSchedule& schedule) = 0;

    /// The picture on screen at `time`: the last one whose display time is not after it (times that the
    /// container rounded are forgiven); before the first picture, the first one; after the last, the last.
    /// The same picture comes back as the same object. Ascending times decode forwards; a jump far ahead or
    /// back seeks.
    ///
    /// Throws `MediaError::cannotDecode` when the picture on screen at that moment is damaged (later grabs
    /// may work again), `MediaError::interrupted` on cancellation, `MediaError::cannotRead`.
    virtual std::shared_ptr<const Picture> copyImage(MediaTime time) = 0;

    /// A picture near `time` that takes little work, for who wants to know what the film looks like
    /// thereabouts: of those that are reached by decoding at most `pictures` (at least 1) from a picture that
    /// needs no other, at or before `time`, the last one not after it. Where the container leads to no such
    /// picture, the next one that needs no other. A source that cannot be searched is read up to `time`,
    /// gives only pictures that need no other, and finds the nearest with ascending times only. Two calls in
    /// a row that find the same picture may return the same object; it is not that of `copyImage`.
    ///
    /// Ends what `expect` announced; changes no picture that `copyImage` gives later. Throws
    /// `MediaError::cannotDecode` when there is no such picture or it is damaged, `MediaError::interrupted`
    /// on cancellation, `MediaError::cannotRead`.
    virtual TimedPicture copyNearbyImage(MediaTime time, int pictures) = 0;
};

/// Some decoded sound.
struct SampleBuffer {
    double sampleRate = 0;           ///< Hz; positive, at most 2^31 - 1
    int channelsPerFrame = 0;        ///< at least 1
    std::span<const float> samples;  ///< interleaved, nominally -1 ... 1; valid until the next call
};

/// Reads one sound track from presentation time 0 on: silence stands for a late start and for gaps longer
/// than 20 ms, sound before time 0 is left out. Rate and channels are the same in all buffers: sound that
/// changes them on the way is converted to those it started with. Used by one thread at a time.
class SoundReader {
public:
    virtual ~SoundReader() = default;

    /// False when the track cannot be decoded here.
    virtual bool startReading() = 0;
    /// The next samples, whole frames; nothing at the end (or where a damaged file ends early).
    /// Throws `MediaError::interrupted` on cancellation, `MediaError::cannotRead`.
    virtual std::optional<SampleBuffer> copyNextSampleBuffer() = 0;
};

/// An opened video file. Readers made from it are independent of one another and may be used on different
/// threads; they may outlive it. Times that begin again in the middle of a file (recordings put together) are
/// continued: what follows starts where everything before it has ended, for pictures and sound alike.
class MediaAsset {
public:
    virtual ~MediaAsset() = default;

    /// The tracks with moving pictures, the container's default one first; cover art is not among them.
    virtual const std::vector<VideoTrack>& videoTracks() const = 0;
    virtual const std::vector<SoundTrack>& soundTracks() const = 0;
    /// Length of the presentation in seconds: the latest end of the first video track and of all sound
    /// tracks; 0 when there is nothing in it.
    double duration() const;
    /// For the first video track; there must be one. `threads` is how many the decoder may use, at least 1.
    /// Throws `MediaError::cannotRead` when the file has become shorter since it was opened.
    virtual std::unique_ptr<ImageGenerator> makeImageGenerator(int threads,
                                                               IsCancelled isCancelled) const = 0;
    /// For one of the sound tracks. Throws `MediaError::cannotRead` likewise.
    virtual std::unique_ptr<SoundReader> makeSoundReader(std::size_t track,
                                                         IsCancelled isCancelled) const = 0;
};

/// Opens video files.
class MediaLibrary {
public:
    virtual ~MediaLibrary() = default;

    /// Opens a local regular file; the name is only ever a file's name, never an address or a pattern.
    /// Formats that would pull in other files (playlists, concatenation scripts, picture sequences) are
    /// refused. Throws `MediaError`.
    virtual std::shared_ptr<const MediaAsset> open(const std::string& path,
                                                   IsCancelled isCancelled) const = 0;
};

}  // namespace zeb
