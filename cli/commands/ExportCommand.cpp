#include "cli/commands/ExportCommand.h"

#include <CLI/App.hpp>
#include <memory>

#include "cli/export/ExportArguments.h"
#include "cli/export/ExportJob.h"
#include "cli/export/Exporting.h"
#include "cli/progress/ProgressReporter.h"
#include "media/writing/FFmpegFilmLibrary.h"

namespace zeb::cli {
namespace {

ExitCode exportMovie(const ExportArguments& arguments, Console& console) {
    const ExportJob job = planExport(arguments);
    const auto library =
        makeFFmpegFilmLibrary(arguments.verbose ? MediaLogging::verbose : MediaLogging::silent);
    const auto reporter = makeProgressReporter(arguments.progress, console,
                                               arguments.verbose ? Verbosity::verbose : Verbosity::quiet);
    return Exporting(job, *library, *reporter).run();
}

}  // namespace

std::function<ExitCode()> declareExport(CLI::App& parser, Console& console) {
    const auto arguments = std::make_shared<ExportArguments>();
    declareExportArguments(parser, *arguments);
    parser.footer(std::string(exportOutputHelp) + exitCodeHelp);
    return [arguments, &console] { return exportMovie(*arguments, console); };
}

}  // namespace zeb::cli
