#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cli/Failure.h"
#include "cli/encode/EncodeJob.h"
#include "cli/progress/ProgressReporter.h"
#include "conversion/forecast/RecordSamples.h"
#include "conversion/forecast/SizeForecast.h"
#include "media/Media.h"
#include "platform/files/OutputPlace.h"

namespace zeb::cli {

/// A video opened for analysis. Passing it on saves the conversion from opening and scanning it again.
class OpenedSource final : public MediaLibrary {
public:
    /// Throws `MediaError`.
    OpenedSource(const MediaLibrary& library, const std::string& path, const IsCancelled& isCancelled)
        : m_library(library), m_path(path), m_asset(library.open(path, isCancelled)) {}

    const MediaAsset& asset() const { return *m_asset; }

    std::shared_ptr<const MediaAsset> open(const std::string& path, IsCancelled isCancelled) const override {
        return path == m_path ? m_asset : m_library.open(path, std::move(isCancelled));
    }

private:
    const MediaLibrary& m_library;
    std::string m_path;
    std::shared_ptr<const MediaAsset> m_asset;
};

/// The conversion of one input, including all reports about it.
class Encoding {
public:
    Encoding(const EncodeArguments& arguments, const EncodeJob& job, const MediaLibrary& library,
             ProgressReporter& reporter)
        : m_arguments(arguments),
          m_job(job),
          m_library(library),
          m_reporter(reporter),
          m_output(job.output, termsOf(arguments)) {}

    /// Converts and reports; throws no error of the conversion. An incomplete movie is shortened to its whole
    /// seconds, or removed if it has none.
    ExitCode run();

    /// Reports the expected size of the movie and writes nothing. Exit codes as for `run`: `conversionFailed`
    /// if the movie would exceed the format's limit, `unwritableOutput` if the space would not suffice or the
    /// output is rejected.
    ExitCode estimate();

private:
    SizeForecast forecastAll(const MediaAsset& asset, const Settings& settings,
                             const ConversionPlan& plan) const;
    int threads() const;
    std::optional<SizeForecast> forecastQuickly(const MediaAsset& asset, const Settings& settings) const;
    SizeForecast forecastFromSamples(const MediaAsset& asset, const ForecastCase& about,
                                     SamplingEffort effort) const;
    void reportForecast(const Settings& settings, const SizeForecast& forecast);
    void convert();
    static OutputTerms termsOf(const EncodeArguments& arguments);
    // Rejects an unusable input or output before long work is done in vain.
    void checkFiles() const;
    OpenedSource openSource() const;
    Settings proposeSettings(const MediaAsset& asset);

    const EncodeArguments& m_arguments;
    const EncodeJob& m_job;
    const MediaLibrary& m_library;
    ProgressReporter& m_reporter;
    OutputPlace m_output;
};

}  // namespace zeb::cli
