#include "cli/encode/EncodeArguments.h"

#include <CLI/App.hpp>
#include <array>
#include <string_view>

#include "cli/Options.h"
#include "cli/Text.h"

namespace zeb::cli {
namespace {

// Bounds of the container's 16-bit fields.
constexpr int highestSide = 65535;
constexpr int highestRate = 65535;
constexpr int highestTrack = 1'000'000;
constexpr int highestThreadCount = 256;

// The sizes that the presets have until a user changes them.
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

}  // namespace

void declareEncodeArguments(CLI::App& parser, EncodeArguments& arguments) {
    parser
        .add_option("INPUT", arguments.inputs, "Video files; after \"--\" also names that start with \"-\"")
        ->required()
        ->option_text("...")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    addOption<std::string>(parser, "-o,--output", arguments.output, notEmpty, "a file or folder",
                           "FILE|FOLDER",
                           "The movie, or its folder, made if it ends in / [the input's name with .zeb]");
    parser.add_option("--title", arguments.title, "The movie's title [the input's name]")
        ->type_name("TEXT")
        ->option_text("TEXT");

    CLI::Option* size = addOption<FrameSize>(parser, "--size", arguments.size, frameSize,
                                             "WIDTHxHEIGHT with sides from 1 to 65535", "WxH",
                                             "Fit the picture into this size [the source's]");
    addChoice(parser, "--preset", arguments.size, presets, "one of dvd, hd, fullhd", "NAME",
              "The size dvd (720x576), hd (1280x720) or fullhd (1920x1080)")
        ->excludes(size);
    parser.add_flag("--stretch", arguments.stretch, "Fill the size without keeping the aspect");
    addOption<int>(parser, "--fps", arguments.fps, numberBetween(1, highestRate),
                   "a whole number from 1 to 65535", "N",
                   "Frames per second, never more than the source has [the source's, up to 60]");
    addChoice(parser, "--mode", arguments.mode, modes, "one of 32, 4", "32|4",
              "16-bit high colour, or black, red, green and white [32]");
    parser.add_flag("--dither", arguments.dither, "Diffuse the error in Mode 4 (no effect in Mode 32)");
    addChoice(parser, "--audio", arguments.audioChannels, audioLayouts, "one of off, mono, stereo", "NAME",
              "Sound: off, mono or stereo [stereo]");
    addOption<int>(parser, "--track", arguments.track, numberBetween(1, highestTrack),
                   "a whole number from 1 to 1000000", "N",
                   "The sound track, counted from 1; beyond the last one the last [1]");
    parser.add_flag("--loop", arguments.loop, "Mark the movie to be played in a loop");
    addOption<int>(parser, "--threads", arguments.threads, numberBetween(0, highestThreadCount),
                   "a whole number from 0 to 256", "N",
                   "Threads to decode and to encode with [0: one per processor core]");
    parser.add_flag("--force", arguments.force, "Replace a movie that exists");
    parser.add_flag("--estimate", arguments.estimate,
                    "Write nothing, only tell how large the movie would be");
    addReportingOptions(parser, arguments.progress, arguments.verbose);
}

Settings settingsFor(const EncodeArguments& arguments, const std::string& input, const SourceInfo& source) {
    const FrameSize proposed = {proposedSide(source.width), proposedSide(source.height)};
    const FrameSize size = arguments.size.value_or(proposed);
    Settings settings;
    settings.title = arguments.title.value_or(proposedTitle(input));
    settings.width = size.width;
    settings.height = size.height;
    settings.preserveAspect = !arguments.stretch;
    settings.fps = arguments.fps.value_or(proposedRate(source.fps));
    settings.fpsFromSource = !arguments.fps.has_value();
    settings.loop = arguments.loop;
    settings.includeAudio = arguments.audioChannels > 0;
    settings.audioTrackIndex = arguments.track - 1;
    settings.audioChannels = arguments.audioChannels;
    settings.dither = arguments.dither;
    settings.qlModeNumber = arguments.mode;
    return settings;
}

}  // namespace zeb::cli
