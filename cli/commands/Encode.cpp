#include "cli/commands/Commands.h"

#include <memory>

#include "cli/SettingOptions.h"
#include "cli/encode/EncodeJob.h"
#include "cli/encode/Encoding.h"
#include "cli/progress/ProgressReporter.h"
#include "media/Media.h"

namespace zeb::cli {
namespace {

ExitCode encode(const EncodeArguments& arguments, Console& console) {
    const std::vector<EncodeJob> jobs = planJobs(arguments);
    checkRequest(arguments);
    if (arguments.others.dither && arguments.others.qlModeNumber != 4) {
        console.complain("--dither has no effect in Mode 32", Colour::yellow);
    }
    const auto library =
        makeFFmpegMediaLibrary(arguments.verbose ? MediaLogging::verbose : MediaLogging::silent);
    const auto reporter = makeProgressReporter(arguments.progress, console,
                                               arguments.verbose ? Verbosity::verbose : Verbosity::quiet);
    const SettingsOutput settingsOutput(arguments, arguments.force, console);
    if (!settingsOutput.check(arguments.inputs.front())) return ExitCode::unwritableOutput;
    ExitCode result = ExitCode::done;
    for (const EncodeJob& job : jobs) {
        if (result == ExitCode::interrupted) {
            reporter->began(job);
            reporter->failed({"not started because of the interrupt", result, 0});
            continue;
        }
        Encoding encoding(arguments, job, *library, *reporter);
        const ExitCode code = arguments.estimate ? encoding.estimate() : encoding.run();
        if (result == ExitCode::done || code == ExitCode::interrupted) result = code;
        // Without standard output a forecast is lost; a movie does not depend on it.
        if (arguments.estimate && !console.outIsGood()) return ExitCode::unwritableOutput;
    }
    if (result != ExitCode::wrongUsage && !settingsOutput.write()) return ExitCode::unwritableOutput;
    return result;
}

constexpr int highestThreadCount = 256;

constexpr std::array inputOptions = {
    Option{.names = "INPUT",
           .placeholder = "...",
           .help = "Video files; after \"--\" also names that start with \"-\"",
           .take = append<&EncodeArguments::inputs>,
           .isRequired = true,
           .isRepeatable = true},
    Option{.names = "-o,--output",
           .placeholder = "FILE|FOLDER",
           .help = "The movie, or its folder (created if it ends in /) [the input's name with .zeb]",
           .expected = "a file or folder",
           .take = fileName<&EncodeArguments::output>},
};

constexpr std::array movieOptions = {
    Option{.names = "--title",
           .placeholder = "TEXT",
           .help = "The movie's title [the input's name]",
           .take =
               [](void* arguments, const std::string& text) {
                   static_cast<EncodeArguments*>(arguments)->title = text;
                   return true;
               }},
    settingOption<EncodeArguments, "sound.channels">("--audio", "NAME",
                                                     "Sound: off, mono or stereo [stereo]"),
    settingOption<EncodeArguments, "sound.track">(
        "--track", "N", "The sound track, counted from 1; beyond the last one the last [1]"),
    settingOption<EncodeArguments, "loop">("--loop", "", "Mark the movie to be played in a loop"),
};

constexpr std::array runOptions = {
    Option{.names = "--threads",
           .placeholder = "N",
           .help = "Number of threads [0: one per processor core]",
           .expected = "a whole number from 0 to 256",
           .take = number<&EncodeArguments::threads, 0, highestThreadCount>},
    Option{.names = "--force",
           .placeholder = "",
           .help = "Replace a movie that exists",
           .flag = flag<&EncodeArguments::force>},
    Option{.names = "--estimate",
           .placeholder = "",
           .help = "Write nothing, only forecast the size of the movie",
           .flag = flag<&EncodeArguments::estimate>},
    progressOption<&EncodeArguments::progress>,
    verboseOption<&EncodeArguments::verbose>,
};

constexpr auto encodeOptions = joined(
    inputOptions, settingsFileOptions<EncodeArguments>, saveSettingsOptions<EncodeArguments>, movieOptions,
    sizeOptions<EncodeArguments>, filmShapeOptions<EncodeArguments>, stretchOptions<EncodeArguments>,
    rateOptions<EncodeArguments>, rangeOptions<EncodeArguments>, colourOptions<EncodeArguments>, runOptions);

constexpr const char* encodeNotes =
    "The result goes to standard output, as does the progress; warnings, errors and the log go to\n"
    "standard error. An interrupt (Ctrl-C) finishes the movie at its last complete second; a\n"
    "second one ends the program at once.\n\n"
    "Of surround sound the first two channels are taken.\n\n"
    "--fit scale keeps the picture's aspect: the movie's sides are multiples of 8, at least 64 and no\n"
    "larger than the source's; stretch is the same without the aspect. pad and fill give exactly the\n"
    "size (multiples of 8), enlarging small pictures: pad shows the whole picture with a border,\n"
    "fill cuts its edges off. A picture is cropped first, then rotated, flipped and fitted.\n\n"
    "--dithering of Mode 4: none or diffusion with --colours levels; ordered (default, calm) or fine\n"
    "(sharper letters, for stills and cartoons) with --colours natural. Of Mode 32: none or rows\n"
    "(no visible bands).\n\n"
    "A warning announces a conversion that will exceed the format's 4 GiB or the free space; it\n"
    "continues as far as possible. --estimate returns the same exit code: 1 above 4 GiB, 4 without\n"
    "enough space.";

}  // namespace

constinit const Command encodeCommand =
    command<encode>("encode", "Convert video files into ZEB movies", encodeOptions, encodeNotes);

}  // namespace zeb::cli
