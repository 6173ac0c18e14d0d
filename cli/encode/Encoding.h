#pragma once

#include <optional>
#include <string>

#include "cli/Failure.h"
#include "cli/encode/EncodeJob.h"
#include "cli/encode/OpenedSource.h"
#include "cli/progress/ProgressReporter.h"
#include "conversion/forecast/SamplePictures.h"
#include "conversion/forecast/SizeForecast.h"
#include "media/Media.h"
#include "platform/files/OutputPlace.h"

namespace zeb::cli {

/// The conversion of one input from the first look at it to the report of how it ended.
class Encoding {
public:
    Encoding(const EncodeArguments& arguments, const EncodeJob& job, const MediaLibrary& library,
             ProgressReporter& reporter)
        : m_arguments(arguments),
          m_job(job),
          m_library(library),
          m_reporter(reporter),
          m_output(job.output, termsOf(arguments)) {}

    /// Converts and reports; throws nothing that a conversion throws. A movie that could not be completed is
    /// made a shorter one, or removed when it has no whole second.
    ExitCode run();

    /// Reports how large the movie would be, and writes nothing. Ends as `run` would: `conversionFailed` when
    /// the movie would pass the format's limit, `unwritableOutput` when the space would not suffice or the
    /// output is refused.
    ExitCode estimate();

private:
    SizeForecast forecastAll(const MediaAsset& asset, const Settings& settings) const;
    std::optional<SizeForecast> forecastQuickly(const MediaAsset& asset, const Settings& settings) const;
    SizeForecast forecastFromSamples(const MediaAsset& asset, const ForecastCase& about,
                                     SamplingEffort effort) const;
    void reportForecast(const Settings& settings, const SizeForecast& forecast);
    void convert();
    static OutputTerms termsOf(const EncodeArguments& arguments);
    // Refuses what cannot become a movie, or an output that must not be made, before long work is done for
    // nothing.
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
