#include "cli/commands/Commands.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <memory>

#include "cli/export/ExportJob.h"
#include "cli/export/Exporting.h"
#include "cli/progress/ProgressReporter.h"
#include "conversion/plan/TimeRange.h"
#include "media/FilmWriter.h"

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

constexpr int largestScale = 64;
constexpr int highestFrame = std::numeric_limits<int>::max();

constexpr std::array formats = {
    Choice<ExportFormat>{"png", ExportFormat::png}, Choice<ExportFormat>{"wav", ExportFormat::wav},
    Choice<ExportFormat>{"gif", ExportFormat::gif}, Choice<ExportFormat>{"mp4", ExportFormat::mp4},
    Choice<ExportFormat>{"mkv", ExportFormat::mkv}, Choice<ExportFormat>{"webm", ExportFormat::webm},
};

std::string inLowerCase(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

std::optional<Mode32Interpretation> interpretationFrom(std::string_view text) {
    for (const Mode32Interpretation interpretation : allMode32Interpretations) {
        if (inLowerCase(storedValue(interpretation)) == inLowerCase(text)) return interpretation;
    }
    return std::nullopt;
}

constexpr const char* aTime = "a time (seconds, M:SS or H:MM:SS, with up to six decimals)";

constexpr Option exportOptions[] = {
    {.names = "FILE",
     .placeholder = " ",
     .help = "A ZEB movie",
     .take = anyText<&ExportArguments::input>,
     .isRequired = true},
    {.names = "-o,--output",
     .placeholder = "OUT",
     .help = "Output file; its extension selects the format (required, see below)",
     .expected = "a file or folder",
     .take = fileName<&ExportArguments::output>,
     .isRequired = true},
    {.names = "--format",
     .placeholder = "NAME",
     .help = "png, wav, gif, mp4, mkv or webm, instead of the one that OUT's extension selects",
     .expected = "one of png, wav, gif, mp4, mkv, webm",
     .take = choice<&ExportArguments::format, formats>},
    {.names = "--frame",
     .placeholder = "N",
     .help = "Only frame N, counted from 0 (PNG)",
     .expected = "a whole number from 0 to 2147483647",
     .take = number<&ExportArguments::frame, 0, highestFrame>},
    {.names = "--at",
     .placeholder = "TIME",
     .help = "Only the frame on screen at TIME (PNG)",
     .expected = aTime,
     .take = parsed<&ExportArguments::at, parseTime>,
     .excludes = "--frame"},
    {.names = "--from",
     .placeholder = "TIME",
     .help = "Begin at TIME: seconds, M:SS or H:MM:SS, with decimals [0]",
     .expected = aTime,
     .take = parsed<&ExportArguments::from, parseTime>,
     .excludes = "--frame,--at"},
    {.names = "--to",
     .placeholder = "TIME",
     .help = "End before TIME [the movie's end]",
     .expected = aTime,
     .take = parsed<&ExportArguments::to, parseTime>,
     .excludes = "--frame,--at"},
    {.names = "--scale",
     .placeholder = "N",
     .help = "Make every pixel N x N, with sharp edges [1; 2 for MP4 and WebM of Mode 4]",
     .expected = "a whole number from 1 to 64",
     .take = number<&ExportArguments::scale, 1, largestScale>},
    {.names = "--interpretation",
     .placeholder = "NAME",
     .help = "How Mode 32 pixels are read: rgb565be, rgb565le, qpcpackedbe or qpcpackedle [rgb565le]",
     .expected = "one of rgb565be, rgb565le, qpcpackedbe, qpcpackedle",
     .take = parsed<&ExportArguments::interpretation, interpretationFrom>},
    {.names = "--force",
     .placeholder = "",
     .help = "Replace files that exist",
     .flag = flag<&ExportArguments::force>},
    progressOption<&ExportArguments::progress>,
    verboseOption<&ExportArguments::verbose>,
};

constexpr const char* exportNotes =
    "The extension of OUT selects the format:\n"
    "  .png          one picture, with --frame or --at\n"
    "  %05d in .png  numbered pictures, \"frame-%05d.png\": %d is the frame's number in the\n"
    "                movie, counted from 0; %05d is the same with at least five digits\n"
    "  a folder      frame-00000.png and so on in it (it is made if its name ends in /);\n"
    "                with --format or a single frame one file there, named after FILE\n"
    "  .wav          the sound exactly as it is stored, 8 bits at 20 kHz\n"
    "  .mkv          film and sound without any loss\n"
    "  .mp4, .webm   film and sound for every player, of a quality that shows no loss; colours\n"
    "                have half the resolution there: from --scale 2 on they are sharp, too\n"
    "  .gif          animation of 256 colours per picture, without sound; it repeats if the\n"
    "                movie is meant to loop\n"
    "Damaged and unfinished movies are exported as far as they can be read. OUT appears when it is\n"
    "complete; after an error or interrupt there is none, or what was there before.";

}  // namespace

constinit const Command exportCommand = command<exportMovie>(
    "export", "Turn a ZEB movie into ordinary pictures, film or sound", exportOptions, exportNotes);

}  // namespace zeb::cli
