#pragma once

#include "cli/Failure.h"
#include "cli/export/ExportJob.h"
#include "cli/progress/ProgressReporter.h"
#include "media/FilmWriter.h"

namespace zeb::cli {

/// The export of one movie from the first look at it to the report of how it ended.
class Exporting {
public:
    Exporting(const ExportJob& job, const FilmLibrary& library, ProgressReporter& reporter)
        : m_job(job), m_library(library), m_reporter(reporter) {}

    /// Exports and reports; throws nothing that an export throws.
    ExitCode run();

private:
    void exportMovie();
    // Refuses an output that must not be replaced or cannot be created, before long work is done for nothing.
    void checkOutput() const;
    void checkPictures(const ExportPlan& plan) const;
    void reportPlan(const ExportPlan& plan);

    const ExportJob& m_job;
    const FilmLibrary& m_library;
    ProgressReporter& m_reporter;
};

}  // namespace zeb::cli
