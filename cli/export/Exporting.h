#pragma once

#include "cli/Failure.h"
#include "cli/export/ExportJob.h"
#include "cli/progress/ProgressReporter.h"
#include "media/FilmWriter.h"

namespace zeb::cli {

/// The export of one movie, including all reports about it.
class Exporting {
public:
    Exporting(const ExportJob& job, const FilmLibrary& library, ProgressReporter& reporter)
        : m_job(job), m_library(library), m_reporter(reporter) {}

    /// Exports and reports; throws no error of the export.
    ExitCode run();

private:
    void exportMovie();
    // Rejects an output that must not be replaced or cannot be created before long work is done in vain.
    void checkOutput() const;
    void checkPictures(const ExportPlan& plan) const;
    void reportPlan(const ExportPlan& plan);

    const ExportJob& m_job;
    const FilmLibrary& m_library;
    ProgressReporter& m_reporter;
};

}  // namespace zeb::cli
