#include "conversion/export/ExportRun.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "codec/FrameDecoder.h"
#include "conversion/export/ExportError.h"
#include "conversion/export/FrameScaling.h"
#include "conversion/export/MovieInput.h"
#include "conversion/plan/OutputName.h"
#include "conversion/sound/WAVFile.h"
#include "format/ZEBErrors.h"
#include "format/check/MovieFacts.h"
#include "format/walk/SecondWalker.h"
#include "platform/files/StagedOutput.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/PathName.h"

namespace zeb {
namespace {

constexpr std::int64_t microsecond = 1'000'000;  // in a second
constexpr int largestSide = 65535;
constexpr std::int64_t mostPixels = std::int64_t{1} << 28;
constexpr std::uint8_t silence = 128;

using Second = SecondWalker::Second;
using State = BlockWalker::State;

/// floor(value x factor / divisor) for values that are not negative, as large as fits.
std::int64_t scaled(std::int64_t value, std::int64_t factor, std::int64_t divisor) {
    const std::int64_t whole = value / divisor;
    if (whole >= std::numeric_limits<std::int64_t>::max() / factor - 1)
        return std::numeric_limits<std::int64_t>::max();
    return whole * factor + value % divisor * factor / divisor;
}

std::int64_t scaledUp(std::int64_t value, std::int64_t factor, std::int64_t divisor) {
    const std::int64_t down = scaled(value, factor, divisor);
    const bool isExact = value % divisor * factor % divisor == 0;
    return isExact || down == std::numeric_limits<std::int64_t>::max() ? down : down + 1;
}

/// "12.5 s": a time in seconds with as many decimals as it needs.
std::string timeText(std::int64_t microseconds) {
    std::string text = std::to_string(microseconds / microsecond);
    if (const std::int64_t rest = microseconds % microsecond; rest != 0) {
        std::string decimals = std::to_string(microsecond + rest).substr(1);
        decimals.erase(decimals.find_last_not_of('0') + 1);
        text += "." + decimals;
    }
    return text + " s";
}

int scaleFor(const ExportSettings& settings, const ZEBHeader& header) {
    const bool halvesColour = settings.kind == ExportSettings::Kind::film &&
                              (settings.format == FilmFormat::mp4 || settings.format == FilmFormat::webm);
    return settings.scale.value_or(halvesColour && header.mode == 4 ? 2 : 1);
}

MovieFacts factsOf(const std::string& input, const IsCancelled& isCancelled) {
    MovieInput file(input, isCancelled);
    return readMovieFacts(file);
}

/// One export: what its steps share.
class Run {
public:
    Run(const FilmLibrary& library, const std::string& input, const std::string& output,
        const ExportSettings& settings, const ExportCallbacks& callbacks)
        : m_library(library),
          m_output(output),
          m_settings(settings),
          m_callbacks(callbacks),
          m_facts(factsOf(input, callbacks.isCancelled)),
          m_walker(std::make_unique<MovieInput>(input, callbacks.isCancelled)),
          m_fps(m_facts.header.fps),
          m_scale(scaleFor(settings, m_facts.header)) {
        m_decoder.mode32Interpretation = settings.interpretation;
        m_plan.header = m_facts.header;
    }

    ExportResult run();

private:
    void poll() const {
        if (m_callbacks.isCancelled && m_callbacks.isCancelled()) throw ZEBConverterError::cancelled();
    }
    void log(const std::string& line) const {
        if (m_callbacks.logged) m_callbacks.logged(line);
    }
    void warn(const std::string& line) const {
        if (m_callbacks.warned) m_callbacks.warned(line);
    }
    void planned() const {
        if (m_callbacks.planned) m_callbacks.planned(m_plan);
    }
    void advanced(std::int64_t frames, std::uint64_t bytes) const {
        if (m_callbacks.advanced) m_callbacks.advanced(frames, bytes);
    }

    void countFrames();
    void resolveRange();
    void findPictureSize();
    ExportResult exportPictures();
    ExportResult exportFilm();
    ExportResult exportSound();
    ExportResult shown(ExportResult result) const;
    void commit(StagedOutput& stage);

    /// Calls `onSecond(second, begin, end)` for every second in the range with the frames of it that count,
    /// then `onFrame(image)` for each of them. Returns the number of frames.
    template <typename OnSecond, typename OnFrame>
    std::int64_t forEachFrame(const OnSecond& onSecond, const OnFrame& onFrame);
    std::optional<FrameImage> decode(const Second& second, int index);
    const FrameImage& imageOf(const Second& second, int index);
    void requireUsable(const FrameImage& image) const;
    void noteGood(std::int64_t frame);

    int filmChannels() const;
    void warnOfOddSounds() const;
    void addSound(FilmWriter& film, const Second& second, int begin, int end);
    std::uint64_t copySound(WAVFile& file, const Second& second, std::int64_t begin, std::int64_t end);

    std::int64_t rangeEnd() const { return m_plan.first + m_plan.frames; }

    const FilmLibrary& m_library;
    const std::string& m_output;
    const ExportSettings& m_settings;
    const ExportCallbacks& m_callbacks;
    const MovieFacts m_facts;
    SecondWalker m_walker;
    const int m_fps;
    const int m_scale;
    ExportPlan m_plan;
    std::int64_t m_seconds = 0;  ///< that the movie really has, a torn last one among them

    FrameDecoder m_decoder;
    std::vector<std::uint8_t> m_record;
    FrameImage m_last;                       ///< the latest good picture, enlarged; black before the first
    std::optional<std::int64_t> m_firstBad;  ///< of a row of frames that cannot be decoded, up to now
    std::vector<std::uint8_t> m_sound;
    std::int64_t m_oddSounds = 0;  ///< seconds whose sound is not as long as it should be
};

ExportResult Run::run() {
    countFrames();
    resolveRange();
    switch (m_settings.kind) {
        case ExportSettings::Kind::sound:
            return exportSound();
        case ExportSettings::Kind::film:
            return exportFilm();
        default:
            return exportPictures();
    }
}

void Run::countFrames() {
    if (m_facts.isFinished) {
        m_plan.allFrames = m_facts.header.frameCount;
        m_seconds = m_facts.wholeSeconds;
        return;
    }
    while (const std::optional<Second> second = m_walker.next()) {
        poll();
        // Bytes behind the last second of a finished movie.
        if (m_facts.wasFinished && second->state == State::torn &&
            second->number * m_fps >= m_facts.header.frameCount)
            break;
        m_plan.allFrames += second->frameCount;
        ++m_seconds;
    }
    log(localizedText("log_unfinished_movie_format", {m_plan.allFrames}));
}

void Run::resolveRange() {
    const std::int64_t all = m_plan.allFrames;
    const auto refuse = [&](const TextArgument& place) {
        throw ExportError::outside(place, all, timeText(scaled(all, microsecond, m_fps)));
    };
    if (m_settings.frame || m_settings.at) {
        m_plan.first = m_settings.frame ? *m_settings.frame : scaled(*m_settings.at, m_fps, microsecond);
        m_plan.frames = 1;
        if (m_plan.first >= all) {
            if (m_settings.at) refuse(timeText(*m_settings.at));
            refuse(KeyedText{"frame_format", {m_plan.first}});
        }
        return;
    }
    const bool isSound = m_settings.kind == ExportSettings::Kind::sound;
    m_plan.first = scaled(m_settings.from, m_fps, microsecond);
    const std::int64_t end =
        m_settings.to ? std::min(scaledUp(*m_settings.to, m_fps, microsecond), all) : all;
    // The sound of a torn second may be there without a frame of it.
    if (m_plan.first >= end && !(isSound && m_settings.from == 0)) refuse(timeText(m_settings.from));
    m_plan.frames = std::max<std::int64_t>(end - m_plan.first, 0);
}

/// The size of the first picture in the range that can be decoded.
void Run::findPictureSize() {
    m_walker.seekTo(m_plan.first / m_fps);
    std::string reason;
    while (const std::optional<Second> second = m_walker.next()) {
        const std::int64_t base = second->number * m_fps;
        for (int i = 0; i < second->frameCount; ++i) {
            if (base + i < m_plan.first) continue;
            if (base + i >= rangeEnd()) break;
            poll();
            if (const std::optional<FrameImage> image = decode(*second, i)) {
                requireUsable(*image);
                m_plan.width = image->width * m_scale;
                m_plan.height = image->height * m_scale;
                m_last = blackImage(m_plan.width, m_plan.height);
                return;
            }
            if (reason.empty()) reason = m_decoder.lastDecodeDebug();
        }
        if (base + m_fps >= rangeEnd()) break;
    }
    if (m_plan.frames == 1) throw ExportError::undecodable(m_plan.first, reason);
    throw ExportError::withoutPicture();
}

template <typename OnSecond, typename OnFrame>
std::int64_t Run::forEachFrame(const OnSecond& onSecond, const OnFrame& onFrame) {
    m_walker.seekTo(m_plan.first / m_fps);
    std::int64_t next = m_plan.first;
    while (next < rangeEnd()) {
        poll();
        const std::optional<Second> second = m_walker.next();
        if (!second) break;
        const std::int64_t base = second->number * m_fps;
        const auto begin = static_cast<int>(next - base);
        const auto end = static_cast<int>(std::min<std::int64_t>(second->frameCount, rangeEnd() - base));
        if (end <= begin) break;
        onSecond(*second, begin, end);
        for (int i = begin; i < end; ++i) {
            poll();
            onFrame(imageOf(*second, i));
            ++next;
        }
    }
    noteGood(next);
    const std::int64_t done = next - m_plan.first;
    if (done < m_plan.frames) {
        warn(localizedText("warning_movie_breaks_off_format", {next}));
        m_plan.frames = done;
    }
    return done;
}

/// The frame's picture, enlarged; nothing when its record is lost or no picture.
std::optional<FrameImage> Run::decode(const Second& second, int index) {
    m_record.clear();
    if (static_cast<std::size_t>(index) < second.frames.size())
        m_walker.readFrame(second.frames[static_cast<std::size_t>(index)], m_record);
    return m_decoder.decodeFrame(m_record, m_facts.header.width, m_facts.header.height);
}

const FrameImage& Run::imageOf(const Second& second, int index) {
    const std::int64_t frame = second.number * m_fps + index;
    std::optional<FrameImage> image = decode(second, index);
    if (!image) {
        log(localizedText("log_frame_diagnostic_format", {frame, m_decoder.lastDecodeDebug()}));
        if (!m_firstBad) m_firstBad = frame;
        return m_last;
    }
    noteGood(frame);
    requireUsable(*image);
    m_last = m_scale == 1 ? std::move(*image) : enlargedImage(*image, m_scale);
    return m_last;
}

/// Refuses a picture that would become too large when it is enlarged.
void Run::requireUsable(const FrameImage& image) const {
    const std::int64_t width = std::int64_t{image.width} * m_scale;
    const std::int64_t height = std::int64_t{image.height} * m_scale;
    if (std::max(width, height) > largestSide || width * height > mostPixels)
        throw ExportError::pictureTooLarge();
}

/// Ends a row of bad frames before `frame` with one warning for all of them.
void Run::noteGood(std::int64_t frame) {
    if (!m_firstBad) return;
    const std::int64_t first = *std::exchange(m_firstBad, std::nullopt);
    const KeyedText which = frame - first == 1 ? KeyedText{"frame_format", {first}}
                                               : KeyedText{"frames_format", {first, frame - 1}};
    const bool isBlack = first == m_plan.first;
    warn(localizedText(isBlack ? "warning_frames_black_format" : "warning_frames_repeated_format", {which}));
}

ExportResult Run::exportPictures() {
    findPictureSize();
    planned();
    const auto name = NumberedName::parse(std::string(lastPiece(m_output)));
    const bool isNumbered = m_settings.kind == ExportSettings::Kind::pictures && name;
    StagedOutput stage(withoutLastPiece(m_output), m_settings.terms);
    ExportResult result;
    std::int64_t frame = m_plan.first;
    result.files = forEachFrame(
        [](const Second&, int, int) {},
        [&](const FrameImage& image) {
            const auto bytes = m_library.encodePNG(image.pixels, image.width, image.height);
            const auto file = stage.create(isNumbered ? name->with(frame) : std::string(lastPiece(m_output)));
            file->write(bytes);
            // A single picture is one's own; of thousands each sync would take longer than the
            // picture.
            if (!isNumbered) file->synchronise();
            file->close();
            result.bytes += bytes.size();
            ++frame;
            advanced(frame - m_plan.first, result.bytes);
        });
    commit(stage);
    return shown(result);
}

ExportResult Run::exportFilm() {
    findPictureSize();
    planned();
    FilmParameters parameters;
    parameters.format = m_settings.format;
    parameters.width = m_plan.width;
    parameters.height = m_plan.height;
    parameters.picturesPerSecond = m_fps;
    parameters.soundChannels = filmChannels();
    parameters.soundRate = m_facts.header.sampleRate;
    parameters.loops = m_facts.isLooping();

    StagedOutput stage(withoutLastPiece(m_output), m_settings.terms);
    const auto file = stage.create(lastPiece(m_output));
    const auto film = m_library.beginFilm(*file, parameters);
    log(localizedText(film->description()));
    std::int64_t done = 0;
    bool hasOtherSizes = false;
    forEachFrame(
        [&](const Second& second, int begin, int end) {
            if (parameters.soundChannels > 0) addSound(*film, second, begin, end);
        },
        [&](const FrameImage& image) {
            if (image.width == m_plan.width && image.height == m_plan.height) {
                film->addPicture(image.pixels);
            } else {
                hasOtherSizes = true;
                film->addPicture(fittedImage(image, m_plan.width, m_plan.height).pixels);
            }
            advanced(++done, film->bytesWritten());
        });
    if (hasOtherSizes) warn(localizedText("warning_other_sizes"));
    warnOfOddSounds();
    film->finish(m_callbacks.isCancelled);
    poll();
    ExportResult result;
    result.bytes = film->bytesWritten();
    file->synchronise();
    file->close();
    commit(stage);
    return shown(result);
}

/// Completes the result of an export of pictures.
ExportResult Run::shown(ExportResult result) const {
    result.plan = m_plan;
    result.seconds = static_cast<double>(m_plan.frames) / m_fps;
    return result;
}

int Run::filmChannels() const {
    const ZEBHeader& header = m_facts.header;
    if (header.audioChannels < 1 || m_settings.format == FilmFormat::gif) return 0;
    if (header.audioChannels > 2 || header.sampleRate < 1) {
        warn(localizedText("warning_sound_left_out_format",
                           {std::int64_t{header.audioChannels}, std::int64_t{header.sampleRate}}));
        return 0;
    }
    return header.audioChannels;
}

void Run::warnOfOddSounds() const {
    if (m_oddSounds == 0) return;
    const bool isOne = m_oddSounds == 1;
    warn(localizedText(isOne ? "warning_odd_sound" : "warning_odd_sounds_format", {m_oddSounds}));
}

/// The sound of a second's frames `begin` ... `end` - 1, as long as they are.
void Run::addSound(FilmWriter& film, const Second& second, int begin, int end) {
    const auto channels = static_cast<std::uint64_t>(m_facts.header.audioChannels);
    const auto rate = static_cast<std::uint64_t>(m_facts.header.sampleRate);
    const auto fps = static_cast<std::uint64_t>(m_fps);
    const std::uint64_t whole = channels * rate;
    SecondWalker::Piece piece = second.sound;
    if (piece.size != whole) ++m_oddSounds;
    piece.size = static_cast<std::uint32_t>(std::min<std::uint64_t>(piece.size, whole));
    m_walker.read(piece, m_sound);
    m_sound.resize(whole, silence);
    const std::uint64_t from = static_cast<std::uint64_t>(begin) * rate / fps * channels;
    const std::uint64_t to = static_cast<std::uint64_t>(end) * rate / fps * channels;
    film.addSound(std::span(m_sound).subspan(from, to - from));
}

ExportResult Run::exportSound() {
    const ZEBHeader& header = m_facts.header;
    if (header.audioChannels < 1 || header.sampleRate < 1) throw ExportError::withoutSound();
    m_plan.width = header.width;
    m_plan.height = header.height;
    planned();
    StagedOutput stage(withoutLastPiece(m_output), m_settings.terms);
    const auto file = stage.create(lastPiece(m_output));
    WAVFile wav(*file, header.audioChannels, header.sampleRate);
    const std::int64_t begin = scaled(m_settings.from, header.sampleRate, microsecond);
    const std::int64_t end = m_settings.to ? scaled(*m_settings.to, header.sampleRate, microsecond)
                                           : std::numeric_limits<std::int64_t>::max();
    std::uint64_t copied = 0;
    m_walker.seekTo(begin / header.sampleRate);
    while (const std::optional<Second> second = m_walker.next()) {
        const std::int64_t base = second->number * header.sampleRate;
        if (base >= end || second->number >= m_seconds) break;
        copied += copySound(wav, *second, begin - base, end - base);
        const std::int64_t done = (second->number + 1) * m_fps - m_plan.first;
        advanced(std::min(done, m_plan.frames), wav.bytesWritten());
    }
    if (copied == 0) throw ExportError::withoutSound();
    warnOfOddSounds();
    wav.finish();
    file->synchronise();
    file->close();
    commit(stage);
    ExportResult result;
    result.bytes = wav.bytesWritten();
    result.seconds = static_cast<double>(copied) / (header.audioChannels * header.sampleRate);
    result.plan = m_plan;
    return result;
}

/// Copies a second's samples, `begin` ... `end` - 1 counted from its own first one: as they are stored, but a
/// damaged second as long as it plays, with silence for what is lost.
std::uint64_t Run::copySound(WAVFile& file, const Second& second, std::int64_t begin, std::int64_t end) {
    constexpr std::uint64_t pieceSize = 64 * 1024;
    const auto channels = static_cast<std::int64_t>(m_facts.header.audioChannels);
    const std::uint64_t played = static_cast<std::uint64_t>(channels * m_facts.header.sampleRate);
    std::uint64_t stored = second.sound.size;
    if (second.state != State::whole) stored = std::min(stored, played);
    const std::uint64_t length = second.state == State::damaged ? played : stored;
    if (second.state == State::damaged && second.sound.size != played) ++m_oddSounds;
    const auto bytes = [&](std::int64_t samples) {
        const auto most = static_cast<std::int64_t>(length) / channels + 1;
        return std::min(static_cast<std::uint64_t>(std::clamp<std::int64_t>(samples, 0, most) * channels),
                        length);
    };
    const std::uint64_t start = bytes(begin);
    const std::uint64_t stop = bytes(end);
    std::uint64_t position = start;
    while (position < stop) {
        poll();
        std::uint64_t count = std::min(pieceSize, stop - position);
        if (position < stored) {
            count = std::min(count, stored - position);
            if (!m_walker.read({second.sound.offset + position, static_cast<std::uint32_t>(count)}, m_sound))
                break;
        } else {
            m_sound.assign(count, silence);
        }
        file.add(m_sound);
        position += count;
    }
    return position - start;
}

void Run::commit(StagedOutput& stage) {
    poll();
    stage.commit();
}

}  // namespace

ExportResult ExportRun::run(const std::string& input, const std::string& output,
                            const ExportSettings& settings, const ExportCallbacks& callbacks) const {
    return Run(m_library, input, output, settings, callbacks).run();
}

}  // namespace zeb
