#include "conversion/forecast/SizeForecaster.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <system_error>
#include <thread>
#include <tuple>
#include <utility>

#include "conversion/forecast/RecordSamples.h"
#include "conversion/look/FilmAnalysis.h"
#include "format/ZEBErrors.h"
#include "platform/text/ErrorText.h"

namespace zeb {

namespace {

struct Request {
    std::string input;
    std::string output;
    Settings settings;
};

/// Identifies the contents of a file. Another time or size invalidates everything read from the file.
struct SourceIdentity {
    std::string path;
    std::filesystem::file_time_type time;
    std::uintmax_t size = 0;

    bool operator==(const SourceIdentity&) const = default;
};

SourceIdentity identityOf(const std::string& path) {
    std::error_code ignored;
    return {path, std::filesystem::last_write_time(path, ignored), std::filesystem::file_size(path, ignored)};
}

/// Data read from the latest source. Used only by the running task.
class Source {
public:
    SizeForecast forecast(const MediaLibrary& library, const Request& request,
                          const IsCancelled& isCancelled);

private:
    void open(const MediaLibrary& library, const std::string& path, const IsCancelled& isCancelled);
    SoundOutlook sound(const Settings& settings, const IsCancelled& isCancelled);

    std::optional<SourceIdentity> m_identity;
    std::shared_ptr<const MediaAsset> m_asset;
    std::optional<RecordSamples> m_samples;
    std::pair<double, double> m_sampledPart;  ///< start and length of the part used for the samples
    std::map<int, bool> m_hasSound;           ///< by track index
};

void Source::open(const MediaLibrary& library, const std::string& path, const IsCancelled& isCancelled) {
    const SourceIdentity identity = identityOf(path);
    if (m_asset && m_identity == identity) return;
    m_asset.reset();
    m_samples.reset();
    m_hasSound.clear();
    m_asset = library.open(path, isCancelled);
    m_identity = identity;
}

SoundOutlook Source::sound(const Settings& settings, const IsCancelled& isCancelled) {
    const SoundOutlook possible = soundOutlook(*m_asset, settings);
    if (possible.isCertain) return possible;
    const auto known = m_hasSound.find(settings.audioTrackIndex);
    if (known != m_hasSound.end()) return known->second ? SoundOutlook{possible.channels} : SoundOutlook{};
    const SoundOutlook outlook = certainSoundOutlook(*m_asset, settings, isCancelled);
    m_hasSound[settings.audioTrackIndex] = outlook.channels > 0;
    return outlook;
}

SizeForecast Source::forecast(const MediaLibrary& library, const Request& request,
                              const IsCancelled& isCancelled) {
    open(library, request.input, isCancelled);
    if (m_asset->videoTracks().empty()) throw ZEBConverterError::noVideoTrack();
    const int threads = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    const Settings settings = settleAutomatic(*m_asset, request.settings, threads, isCancelled, {});
    const ConversionPlan plan = planConversion(*m_asset, settings);
    const ForecastCase about{settings, plan, sound(settings, isCancelled), spaceFor(request.output)};
    if (settings.qlModeNumber != 32) return forecastUpperBound(about);
    const std::pair part(static_cast<double>(plan.firstFrame) / plan.fps, plan.duration);
    if (!m_samples || m_sampledPart != part) {
        SamplingEffort effort;
        effort.threads = threads;
        std::tie(effort.startSeconds, effort.movieSeconds) = m_sampledPart = part;
        m_samples.reset();
        m_samples.emplace(samplePictures(*m_asset, effort, isCancelled), threads);
    }
    return forecastSize(about, *m_samples, isCancelled);
}

/// Returns nothing if the forecast was cancelled.
std::optional<ForecastOutcome> outcomeOf(Source& source, const MediaLibrary& library, const Request& request,
                                         const std::stop_token& token) {
    const IsCancelled isCancelled = [token] { return token.stop_requested(); };
    if (isCancelled()) return std::nullopt;
    try {
        return ForecastOutcome{source.forecast(library, request, isCancelled), ""};
    } catch (const std::exception& error) {
        // Cancelled work fails with various error types.
        if (isCancelled()) return std::nullopt;
        return ForecastOutcome{std::nullopt, errorText(error)};
    }
}

}  // namespace

/// The main thread owns everything except the source. Closures hold a weak reference.
class SizeForecaster::State : public std::enable_shared_from_this<State> {
public:
    State(const MediaLibrary& library, Tasks& tasks, MainActor& mainActor, Publish publish)
        : m_library(library), m_tasks(tasks), m_mainActor(mainActor), m_publish(std::move(publish)) {}

    void update(Request request) {
        stop();
        m_wanted = std::move(request);
        m_mainActor.postAfter(patience, [weak = weak_from_this(), version = m_version] {
            const auto state = weak.lock();
            if (state && state->m_version == version) state->begin();
        });
    }

    /// Cancels the running forecast and drops the waiting one.
    void stop() {
        ++m_version;
        m_wanted.reset();
        m_isDue = false;
        if (m_task) m_task->cancel();
    }

    /// Creates a new source; the running task may still use the old one.
    void forgetSource() { m_source = std::make_shared<Source>(); }

private:
    void begin() {
        // Run one task at a time: a cancelled task still uses the source, and ends soon.
        m_isDue = m_task.has_value();
        if (m_isDue || !m_wanted) return;
        auto work = [weak = weak_from_this(), source = m_source, request = *m_wanted, version = m_version,
                     &library = m_library, &mainActor = m_mainActor](const std::stop_token& token) {
            auto outcome = outcomeOf(*source, library, request, token);
            mainActor.post([weak, version, outcome = std::move(outcome)] {
                if (const auto state = weak.lock()) state->ended(version, outcome);
            });
        };
        m_task = m_tasks.start(TaskPriority::utility, std::move(work));
    }

    void ended(std::uint64_t version, const std::optional<ForecastOutcome>& outcome) {
        m_task.reset();
        if (m_isDue) begin();
        if (version == m_version && outcome && m_publish) m_publish(*outcome);
    }

    const MediaLibrary& m_library;
    Tasks& m_tasks;
    MainActor& m_mainActor;
    const Publish m_publish;
    std::shared_ptr<Source> m_source = std::make_shared<Source>();
    std::optional<Request> m_wanted;
    std::optional<Task> m_task;   ///< running task
    bool m_isDue = false;         ///< the delay is over, but another task still runs
    std::uint64_t m_version = 0;  ///< of the latest request
};

SizeForecaster::SizeForecaster(const MediaLibrary& library, Tasks& tasks, MainActor& mainActor,
                               Publish publish)
    : m_state(std::make_shared<State>(library, tasks, mainActor, std::move(publish))) {}

SizeForecaster::~SizeForecaster() {
    m_state->stop();
}

void SizeForecaster::update(const std::string& input, const std::string& output, const Settings& settings) {
    m_state->update({input, output, settings});
}

void SizeForecaster::clear() {
    m_state->stop();
    m_state->forgetSource();
}

}  // namespace zeb
