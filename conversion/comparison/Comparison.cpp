#include "conversion/comparison/Comparison.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "conversion/comparison/Detail.h"
#include "conversion/comparison/FilmFrames.h"
#include "conversion/comparison/Flicker.h"
#include "conversion/comparison/MovieFrames.h"
#include "conversion/comparison/SpatialCIELAB.h"
#include "conversion/comparison/SquaredError.h"
#include "conversion/comparison/StructuralSimilarity.h"
#include "conversion/export/ExportError.h"
#include "format/ZEBErrors.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/NumberText.h"

namespace zeb {
namespace {

/// The measures of one moment; squared errors instead of signal-to-noise ratios.
using MomentFigures = std::array<std::optional<double>, measureCount>;

constexpr std::int64_t momentsOfBatch = 256;

constexpr bool isSquaredError(Measure measure) {
    return measure == Measure::peakSignal || measure == Measure::blurredPeakSignal;
}

constexpr bool greaterIsWorse(Measure measure) {
    return measure != Measure::detail && measure != Measure::similarity;
}

bool haveSameSize(const FrameImage& a, const FrameImage& b) {
    return a.width == b.width && a.height == b.height;
}

/// Number of threads that the memory allows: a thread needs about 120 bytes per pixel.
int threadCount(int wanted, const ZEBHeader& header) {
    constexpr double budget = 2e9;
    const double bytes = 120.0 * header.width * header.height;
    const int most = wanted > 0 ? wanted : std::max(static_cast<int>(std::thread::hardware_concurrency()), 1);
    return static_cast<int>(std::clamp(budget / bytes, 1.0, static_cast<double>(most)));
}

/// The plan of the conversion that this movie may come from.
ConversionPlan planOf(const MediaAsset& film, const MovieFrames& movie, const Settings& shapeAndTime) {
    Settings settings;
    settings.includeAudio = movie.header().audioChannels > 0;
    settings.fps = movie.header().fps;
    settings.shape = shapeAndTime.shape;
    settings.time = shapeAndTime.time;
    ConversionPlan plan = planConversion(film, settings);
    plan.fps = movie.header().fps;
    plan.totalFrames = movie.count();
    return plan;
}

/// The pictures of a frame and of the next one, if there is one.
struct Moment {
    std::shared_ptr<const Picture> film;
    std::shared_ptr<const Picture> nextFilm;
    std::optional<FrameImage> movie;
    std::optional<FrameImage> nextMovie;
};

class Run {
public:
    Run(const MediaAsset& film, const std::string& movie, const ComparisonSettings& settings,
        const ComparisonCallbacks& callbacks)
        : m_callbacks(callbacks),
          m_movie(movie, callbacks.isCancelled),
          m_plan(planOf(film, m_movie, settings.film)),
          m_threads(threadCount(settings.threads, m_movie.header())),
          m_film(film, m_plan, settings.film, m_threads, [this] { return isCancelled(); }),
          m_moments(settings.moments > 0 ? std::min(settings.moments, m_movie.count()) : m_movie.count()) {
        m_result.size = {m_movie.header().width, m_movie.header().height};
        m_result.fps = m_movie.header().fps;
        m_result.frames = m_movie.count();
    }

    Comparison run();

private:
    bool isCancelled() const { return m_callbacks.isCancelled && m_callbacks.isCancelled(); }
    void poll() const {
        if (isCancelled()) throw ZEBConverterError::cancelled();
    }
    void warn(const std::string& line) const {
        if (m_callbacks.warned) m_callbacks.warned(line);
    }

    void warnOfLength() const;
    std::vector<MomentFigures> measureBatch(std::int64_t first, std::int64_t count);
    Moment read(std::int64_t frame);
    MomentFigures measure(const Moment& moment) const;
    void add(const MomentFigures& figures, std::int64_t frame);
    void finish();

    const ComparisonCallbacks& m_callbacks;
    MovieFrames m_movie;
    const ConversionPlan m_plan;
    const int m_threads;
    FilmFrames m_film;
    const std::int64_t m_moments;
    Comparison m_result;
    std::array<double, measureCount> m_sums{};
    std::array<std::int64_t, measureCount> m_counts{};
};

Comparison Run::run() {
    warnOfLength();
    for (std::int64_t first = 0; first < m_moments; first += momentsOfBatch) {
        const std::int64_t count = std::min(momentsOfBatch, m_moments - first);
        const std::vector<MomentFigures> figures = measureBatch(first, count);
        // In the order of the movie, so that rounding does not depend on the threads.
        for (std::int64_t i = 0; i < count; ++i)
            add(figures[static_cast<std::size_t>(i)], frameOfMoment(first + i, m_moments, m_movie.count()));
    }
    finish();
    return m_result;
}

void Run::warnOfLength() const {
    const double seconds = static_cast<double>(m_movie.count()) / m_movie.header().fps;
    if (std::abs(seconds - static_cast<double>(m_plan.seconds)) <= 1) return;
    warn(localizedText("warning_lengths_differ_format",
                       {durationText(seconds), durationText(static_cast<double>(m_plan.seconds))}));
}

std::vector<MomentFigures> Run::measureBatch(std::int64_t first, std::int64_t count) {
    std::vector<MomentFigures> figures(static_cast<std::size_t>(count));
    std::int64_t next = 0;
    std::mutex reading;  // guards `next`, the readers and `failure`
    std::exception_ptr failure;
    std::atomic<bool> hasFailed = false;
    const auto work = [&] {
        try {
            while (!hasFailed) {
                std::unique_lock lock(reading);
                if (next == count) return;
                const std::int64_t index = next++;
                const Moment moment = read(frameOfMoment(first + index, m_moments, m_movie.count()));
                lock.unlock();
                figures[static_cast<std::size_t>(index)] = measure(moment);
            }
        } catch (...) {
            hasFailed = true;
            const std::lock_guard lock(reading);
            if (!failure) failure = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> threads;
        for (int i = 1; i < std::min<std::int64_t>(m_threads, count); ++i)
            threads.emplace_back(work);
        work();
    }
    if (failure) std::rethrow_exception(failure);
    return figures;
}

Moment Run::read(std::int64_t frame) {
    poll();
    Moment moment;
    moment.film = m_film.at(frame);
    moment.movie = m_movie.at(frame);
    if (frame + 1 == m_movie.count()) return moment;
    moment.nextFilm = m_film.at(frame + 1);
    moment.nextMovie = m_movie.at(frame + 1);
    return moment;
}

MomentFigures Run::measure(const Moment& moment) const {
    MomentFigures figures;
    if (!moment.film || !moment.movie) return figures;
    const FrameSize size{moment.movie->width, moment.movie->height};
    const auto picture = [&size](const PixelBytes& pixels) {
        return MeasuredPicture{pixels, size.width, size.height};
    };
    const PixelBytes filmPixels = m_film.drawn(*moment.film, size);
    const MeasuredPicture film = picture(filmPixels);
    const MeasuredPicture movie = picture(moment.movie->pixels);
    const auto set = [&](Measure measure, std::optional<double> value) {
        figures[static_cast<std::size_t>(measure)] = value;
        poll();
    };
    set(Measure::deltaE40, spatialColourDifference(film, movie, 40));
    set(Measure::deltaE20, spatialColourDifference(film, movie, 20));
    set(Measure::detail, keptDetail(film, movie));
    set(Measure::similarity, structuralSimilarity(film, movie));
    set(Measure::peakSignal, meanSquaredError(film, movie));
    set(Measure::blurredPeakSignal, blurredMeanSquaredError(film, movie));
    // The same picture object twice is a pair of equal pictures, which has no flicker.
    const bool isPair = moment.nextFilm && moment.nextFilm != moment.film && moment.nextMovie &&
                        haveSameSize(*moment.movie, *moment.nextMovie);
    if (!isPair) return figures;
    const PixelBytes nextPixels = m_film.drawn(*moment.nextFilm, size);
    set(Measure::flicker, flicker({film, picture(nextPixels)}, {movie, picture(moment.nextMovie->pixels)}));
    return figures;
}

void Run::add(const MomentFigures& figures, std::int64_t frame) {
    const bool isMeasured = figures[static_cast<std::size_t>(Measure::deltaE40)].has_value();
    ++(isMeasured ? m_result.moments : m_result.momentsLeftOut);
    for (std::size_t i = 0; i < measureCount; ++i) {
        if (!figures[i]) continue;
        const double value = *figures[i];
        m_sums[i] += value;
        ++m_counts[i];
        Figure& figure = m_result.figures[i];
        const bool isWorse =
            !figure.worst ||
            (greaterIsWorse(static_cast<Measure>(i)) ? value > *figure.worst : value < *figure.worst);
        if (!isWorse) continue;
        figure.worst = value;
        figure.worstFrame = frame;
    }
}

void Run::finish() {
    if (m_result.moments == 0) throw ExportError::withoutPicture();
    if (m_result.momentsLeftOut > 0)
        warn(localizedText("warning_moments_left_out_format", {m_result.momentsLeftOut, m_moments}));
    m_result.flickerPairs = m_counts[static_cast<std::size_t>(Measure::flicker)];
    for (std::size_t i = 0; i < measureCount; ++i) {
        Figure& figure = m_result.figures[i];
        if (m_counts[i] == 0) continue;
        figure.mean = m_sums[i] / static_cast<double>(m_counts[i]);
        if (!isSquaredError(static_cast<Measure>(i))) continue;
        figure.mean = peakSignalRatio(*figure.mean);
        figure.worst = peakSignalRatio(*figure.worst);
    }
}

}  // namespace

Comparison compareMovie(const MediaAsset& film, const std::string& movie, const ComparisonSettings& settings,
                        const ComparisonCallbacks& callbacks) {
    return Run(film, movie, settings, callbacks).run();
}

std::int64_t frameOfMoment(std::int64_t index, std::int64_t moments, std::int64_t frames) {
    // With every frame a moment, the middle is the frame.
    return (2 * index + 1) * frames / (2 * moments);
}

}  // namespace zeb
