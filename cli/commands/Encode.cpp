#include "cli/commands/Commands.h"

#include <memory>

#include "cli/encode/EncodeJob.h"
#include "cli/encode/Encoding.h"
#include "cli/progress/ProgressReporter.h"
#include "media/Media.h"

namespace zeb::cli {
namespace {

ExitCode encode(const EncodeArguments& arguments, Console& console) {
    const std::vector<EncodeJob> jobs = planJobs(arguments);
    if (arguments.dither && arguments.mode != 4) {
        console.complain("--dither has no effect in Mode 32", Colour::yellow);
    }
    const auto library =
        makeFFmpegMediaLibrary(arguments.verbose ? MediaLogging::verbose : MediaLogging::silent);
    const auto reporter = makeProgressReporter(arguments.progress, console,
                                               arguments.verbose ? Verbosity::verbose : Verbosity::quiet);
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
    return result;
}

// Limits of the container's 16-bit fields.
constexpr int highestSide = 65535;
constexpr int highestRate = 65535;
constexpr int highestTrack = 1'000'000;
constexpr int highestThreadCount = 256;

// Default sizes of the presets.
constexpr std::array presets = {
    Choice<FrameSize>{"dvd", {720, 576}},
    Choice<FrameSize>{"hd", {1280, 720}},
    Choice<FrameSize>{"fullhd", {1920, 1080}},
};
constexpr std::array modes = {Choice<int>{"32", 32}, Choice<int>{"4", 4}};
constexpr std::array audioLayouts = {Choice<int>{"off", 0}, Choice<int>{"mono", 1}, Choice<int>{"stereo", 2}};

std::optional<FrameSize> frameSize(std::string_view text) {
    const std::size_t cross = text.find_first_of("xX");
    if (cross == std::string_view::npos) return std::nullopt;
    const std::optional<int> width = wholeNumber(text.substr(0, cross), 1, highestSide);
    const std::optional<int> height = wholeNumber(text.substr(cross + 1), 1, highestSide);
    if (!width || !height) return std::nullopt;
    return FrameSize{*width, *height};
}

constexpr Option encodeOptions[] = {
    {.names = "INPUT",
     .placeholder = "...",
     .help = "Video files; after \"--\" also names that start with \"-\"",
     .take = append<&EncodeArguments::inputs>,
     .isRequired = true,
     .isRepeatable = true},
    {.names = "-o,--output",
     .placeholder = "FILE|FOLDER",
     .help = "The movie, or its folder (created if it ends in /) [the input's name with .zeb]",
     .expected = "a file or folder",
     .take = fileName<&EncodeArguments::output>},
    {.names = "--title",
     .placeholder = "TEXT",
     .help = "The movie's title [the input's name]",
     .take = anyText<&EncodeArguments::title>},
    {.names = "--size",
     .placeholder = "WxH",
     .help = "Fit the picture into this size [the source's]",
     .expected = "WIDTHxHEIGHT with sides from 1 to 65535",
     .take = parsed<&EncodeArguments::size, frameSize>},
    {.names = "--preset",
     .placeholder = "NAME",
     .help = "The size dvd (720x576), hd (1280x720) or fullhd (1920x1080)",
     .expected = "one of dvd, hd, fullhd",
     .take = choice<&EncodeArguments::size, presets>,
     .excludes = "--size"},
    {.names = "--stretch",
     .placeholder = "",
     .help = "Fill the size without keeping the aspect",
     .flag = flag<&EncodeArguments::stretch>},
    {.names = "--fps",
     .placeholder = "N",
     .help = "Frames per second, never more than the source has [the source's, up to 60]",
     .expected = "a whole number from 1 to 65535",
     .take = number<&EncodeArguments::fps, 1, highestRate>},
    {.names = "--mode",
     .placeholder = "32|4",
     .help = "16-bit high colour, or black, red, green and white [32]",
     .expected = "one of 32, 4",
     .take = choice<&EncodeArguments::mode, modes>},
    {.names = "--dither",
     .placeholder = "",
     .help = "Diffuse the error in Mode 4 (no effect in Mode 32)",
     .flag = flag<&EncodeArguments::dither>},
    {.names = "--audio",
     .placeholder = "NAME",
     .help = "Sound: off, mono or stereo [stereo]",
     .expected = "one of off, mono, stereo",
     .take = choice<&EncodeArguments::audioChannels, audioLayouts>},
    {.names = "--track",
     .placeholder = "N",
     .help = "The sound track, counted from 1; beyond the last one the last [1]",
     .expected = "a whole number from 1 to 1000000",
     .take = number<&EncodeArguments::track, 1, highestTrack>},
    {.names = "--loop",
     .placeholder = "",
     .help = "Mark the movie to be played in a loop",
     .flag = flag<&EncodeArguments::loop>},
    {.names = "--threads",
     .placeholder = "N",
     .help = "Number of threads [0: one per processor core]",
     .expected = "a whole number from 0 to 256",
     .take = number<&EncodeArguments::threads, 0, highestThreadCount>},
    {.names = "--force",
     .placeholder = "",
     .help = "Replace a movie that exists",
     .flag = flag<&EncodeArguments::force>},
    {.names = "--estimate",
     .placeholder = "",
     .help = "Write nothing, only forecast the size of the movie",
     .flag = flag<&EncodeArguments::estimate>},
    progressOption<&EncodeArguments::progress>,
    verboseOption<&EncodeArguments::verbose>,
};

constexpr const char* encodeNotes =
    "The result goes to standard output, as does the progress; warnings, errors and the log go to\n"
    "standard error. An interrupt (Ctrl-C) finishes the movie at its last complete second; a\n"
    "second one ends the program at once.\n\n"
    "The movie's sides are multiples of 8, at least 64 and no larger than the source's. Of surround\n"
    "sound the first two channels are taken.\n\n"
    "A warning announces a conversion that will exceed the format's 4 GiB or the free space; it\n"
    "continues as far as possible. --estimate returns the same exit code: 1 above 4 GiB, 4 without\n"
    "enough space.";

}  // namespace

constinit const Command encodeCommand =
    command<encode>("encode", "Convert video files into ZEB movies", encodeOptions, encodeNotes);

}  // namespace zeb::cli
