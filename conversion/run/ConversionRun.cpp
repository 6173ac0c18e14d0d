#include "conversion/run/ConversionRun.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <exception>
#include <iterator>
#include <memory>
#include <span>
#include <thread>
#include <utility>
#include <vector>

#include "conversion/look/FilmAnalysis.h"
#include "conversion/look/FrameMaker.h"
#include "conversion/run/FramePipeline.h"
#include "conversion/sound/AudioReader.h"
#include "conversion/sound/SoundBytes.h"
#include "format/Layout.h"
#include "format/ZEBErrors.h"
#include "format/ZEBWriter.h"
#include "platform/text/LocalizedText.h"

namespace zeb {

namespace {

/// Formats with three decimals and a dot, independent of the locale.
std::string withThreeDecimals(double value) {
    char text[64];
    const auto end = std::to_chars(std::begin(text), std::end(text), value, std::chars_format::fixed, 3).ptr;
    return {text, end};
}

/// Rethrows an error after which no picture can be read. Ignores all others.
void rethrowIfReadingEnded(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const MediaError& error) {
        if (error.endsReading()) throw;
    } catch (...) {
        return;
    }
}

/// Closes the writer and ignores errors: after another failure or after `finish` they add no information.
void closeQuietly(ZEBWriter& writer) {
    try {
        writer.close();
    } catch (...) {
        return;
    }
}

/// The shared state of the steps of one conversion.
class Run {
public:
    Run(const MediaLibrary& library, int threads, const ConversionRun::CreateFile& createFile,
        const Settings& settings, const ConversionCallbacks& callbacks)
        : m_library(library),
          m_threads(threads),
          m_createFile(createFile),
          m_settings(settings),
          m_callbacks(callbacks) {
        if (m_callbacks.isCancelled) m_isCancelled = m_callbacks.isCancelled;
    }

    void convert(const std::string& input, OutputPlace& output);

private:
    void report(const std::string& text, double fraction) const {
        if (m_callbacks.progress) m_callbacks.progress(text, fraction);
    }
    void warn(const std::string& text) const {
        if (m_callbacks.warned) m_callbacks.warned(text);
    }
    void advanced(std::int64_t framesDone, const ZEBWriter& writer) const {
        if (m_callbacks.advanced) m_callbacks.advanced(framesDone, writer.bytesWritten());
    }
    void poll() const {
        if (m_isCancelled()) throw ZEBConverterError::cancelled();
    }

    void plan();
    void reportPlan() const;
    std::unique_ptr<FramePipeline> startPipeline() const;
    void extractSound();
    MovieParameters movieParameters() const;
    void writeSeconds(FramePipeline& pipeline, ZEBWriter& writer);
    std::shared_ptr<const EncodedFrame> takeFrame(FramePipeline& pipeline, std::int64_t index);

    const MediaLibrary& m_library;
    const int m_threads;
    const ConversionRun::CreateFile& m_createFile;
    Settings m_settings;  ///< automatic ones are settled by the plan
    const ConversionCallbacks& m_callbacks;
    IsCancelled m_isCancelled = [] { return false; };

    std::shared_ptr<const MediaAsset> m_asset;
    ConversionPlan m_plan;
    GrabSchedule m_schedule;
    int m_channels = 0;
    SoundBytes m_audio;
    std::shared_ptr<const EncodedFrame> m_lastFrame;  ///< the latest successfully encoded frame
};

void Run::convert(const std::string& input, OutputPlace& output) {
    output.setAside(input);
    m_asset = m_library.open(input, m_isCancelled);
    plan();
    reportPlan();
    // Grab and encode pictures while the sound is read; no report shows this before the first second. For
    // long videos the pipeline's limited look-ahead saves no time worth the memory of a second reader.
    constexpr std::int64_t longFilm = 600;  // seconds
    std::unique_ptr<FramePipeline> pipeline;
    if (m_plan.seconds < longFilm) pipeline = startPipeline();
    extractSound();
    if (!pipeline) pipeline = startPipeline();

    ZEBWriter writer(m_createFile(output), movieParameters());
    try {
        writeSeconds(*pipeline, writer);
        writer.finish();
        // Commit before closing: the open file guarantees that the file identity is not reused.
        output.commit();
    } catch (...) {
        pipeline->stop();  // so that its threads end while the file is closed
        closeQuietly(writer);
        throw;
    }
    closeQuietly(writer);
    if (!output.previousPath().empty())
        warn(localizedText("warning_previous_not_removed_format", {output.previousPath()}));
}

void Run::plan() {
    if (m_asset->videoTracks().empty()) throw ZEBConverterError::noVideoTrack();
    checkSettings(m_settings);
    m_settings = settleAutomatic(*m_asset, m_settings, m_threads, m_isCancelled,
                                 [this](const std::string& text) { report(text, 0); });
    m_plan = planConversion(*m_asset, m_settings);
    m_schedule = grabSchedule(m_plan);
}

void Run::reportPlan() const {
    if (m_callbacks.planned) m_callbacks.planned(m_plan);
    const SourceInfo& source = m_plan.source;
    report(localizedText("progress_analyze_format",
                         {std::int64_t{source.width}, std::int64_t{source.height}, std::int64_t{source.fps},
                          std::int64_t{m_plan.size.width}, std::int64_t{m_plan.size.height},
                          std::int64_t{m_plan.fps}, m_plan.duration, m_plan.totalFrames, m_plan.seconds}),
           0);
    const std::string warning = breakOffWarning(*m_asset, m_settings, m_plan);
    if (!warning.empty()) warn(warning);
}

std::unique_ptr<FramePipeline> Run::startPipeline() const {
    const auto tools = std::make_shared<const FrameTools>(
        frameRecipe(m_plan.source.width, m_plan.source.height, m_settings));
    const auto makeEncoder = [tools]() -> FramePipeline::Encode {
        return [maker = std::make_shared<FrameMaker>(tools)](const Picture& picture) {
            return maker->record(picture);
        };
    };

    // Up to two seconds ahead within the memory limit, but always enough to keep every thread busy.
    constexpr std::uint64_t ampleBytes = 16 << 20;
    const std::uint64_t rawFrame = std::uint64_t{2} * static_cast<std::uint64_t>(m_plan.size.width) *
                                   static_cast<std::uint64_t>(m_plan.size.height);
    FramePipeline::Limits limits;
    limits.threads = m_threads;
    limits.framesAhead = 2 * std::max<std::int64_t>(m_plan.fps, m_threads + 1);
    limits.bytesAhead = std::max(ampleBytes, rawFrame * static_cast<std::uint64_t>(m_threads + 1));
    return std::make_unique<FramePipeline>(*m_asset, m_schedule, makeEncoder, limits, m_isCancelled);
}

void Run::extractSound() {
    if (!m_settings.includeAudio || m_settings.audioChannels < 1) return;
    m_channels = std::min(m_settings.audioChannels, 2);
    report(localizedText("progress_extract_audio"), 0);
    m_audio =
        AudioReader::read(*m_asset, layout::sampleRate, m_channels, m_settings.audioTrackIndex, m_isCancelled,
                          {.logged = [this](const std::string& text) { report(text, 0); },
                           .warned = [this](const std::string& text) { warn(text); }},
                          static_cast<std::uint64_t>(sampleCount(m_settings, m_plan)),
                          static_cast<std::uint64_t>(firstSample(m_plan)));
    if (m_audio.empty()) m_channels = 0;
}

MovieParameters Run::movieParameters() const {
    MovieParameters movie;
    movie.title = m_settings.title;
    movie.width = m_plan.size.width;
    movie.height = m_plan.size.height;
    movie.fps = m_plan.fps;
    movie.qlMode = m_settings.qlModeNumber;
    movie.totalFrames = m_plan.totalFrames;
    movie.frameIndexCount = m_plan.seconds;
    movie.audioChannels = m_channels;
    movie.loop = m_settings.loop;
    return movie;
}

void Run::writeSeconds(FramePipeline& pipeline, ZEBWriter& writer) {
    const std::int64_t bytesPerSecond = std::int64_t{std::max(m_channels, 1)} * layout::sampleRate;
    std::vector<std::shared_ptr<const EncodedFrame>> frames;
    std::vector<std::span<const std::uint8_t>> records;
    for (std::int64_t second = 0; second < m_plan.seconds; ++second) {
        poll();
        const std::int64_t first = second * m_plan.fps;
        const std::int64_t end = first + m_plan.fps;
        const double fraction = static_cast<double>(second) / static_cast<double>(m_plan.seconds);
        report(localizedText("progress_second_format", {second + 1, m_plan.seconds, first, end - 1}),
               fraction);

        frames.clear();
        records.clear();
        for (std::int64_t index = first; index < end; ++index) {
            frames.push_back(takeFrame(pipeline, index));
            records.emplace_back(frames.back()->record);
            // The last frame is reported when its second has been written.
            if (index + 1 < end) advanced(index + 1, writer);
        }
        writer.writeSecond(audioSlice(second, m_channels, bytesPerSecond, m_audio), records);
        advanced(end, writer);
    }
}

/// Returns frame `index`. If that frame failed, warns and returns the latest good frame.
std::shared_ptr<const EncodedFrame> Run::takeFrame(FramePipeline& pipeline, std::int64_t index) {
    constexpr std::chrono::milliseconds patience{20};  // interval between cancellation checks
    std::shared_ptr<const EncodedFrame> frame;
    do {
        poll();
        frame = pipeline.next(patience);
    } while (!frame);

    if (frame->error) {
        rethrowIfReadingEnded(frame->error);
        if (!m_lastFrame) std::rethrow_exception(frame->error);
        const double time = m_schedule.at(index).seconds();
        warn(localizedText("warning_frame_repeated_format", {withThreeDecimals(time)}));
    } else {
        m_lastFrame = std::move(frame);
    }
    return m_lastFrame;
}

}  // namespace

ConversionRun::ConversionRun(const MediaLibrary& library, int threads, CreateFile createFile)
    : m_library(library),
      m_threads(threads > 0 ? threads : std::max(1, static_cast<int>(std::thread::hardware_concurrency()))),
      m_createFile(std::move(createFile)) {}

std::unique_ptr<WritableFile> ConversionRun::createMovie(OutputPlace& output) {
    try {
        return output.create();
    } catch (const FileError&) {
        throw ZEBConverterError::cannotCreateOutput(output.path());
    }
}

void ConversionRun::convert(const std::string& input, OutputPlace& output, const Settings& settings,
                            const ConversionCallbacks& callbacks) const {
    try {
        Run(m_library, m_threads, m_createFile, settings, callbacks).convert(input, output);
    } catch (const MediaError& error) {
        if (error.code() == MediaError::interrupted) throw ZEBConverterError::cancelled();
        throw;
    }
}

}  // namespace zeb
