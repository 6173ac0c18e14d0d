#include "conversion/look/Preview.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "cli/Failure.h"
#include "cli/Interruption.h"
#include "cli/SettingOptions.h"
#include "cli/commands/Commands.h"
#include "conversion/look/FilmAnalysis.h"
#include "format/ZEBErrors.h"
#include "media/FilmWriter.h"
#include "platform/files/OutputPlace.h"
#include "platform/files/StagedOutput.h"
#include "platform/text/PathName.h"

namespace zeb::cli {
namespace {

constexpr int mostMoments = 64;

struct PreviewArguments : SettingArguments {
    std::string input;
    std::string output;
    TimePoint at{TimePoint::Unit::percent, 50'000'000};
    std::optional<int> sheet;  ///< number of moments
    bool original = false;
    bool sideBySide = false;
    bool force = false;
};

OutputTerms termsOf(const PreviewArguments& arguments) {
    return {arguments.force ? OutputTerms::Existing::replace : OutputTerms::Existing::keep,
            OutputTerms::MissingFolder::refuse};
}

/// Returns a sheet of moments, each with its original beside it, in about the shape of a screen.
FrameImage sheetOf(Preview& preview, int moments) {
    std::vector<FrameImage> pairs;
    for (int i = 0; i < moments; ++i) {
        const PreviewFrame frame = preview.frame(preview.frameOf(i, moments));
        pairs.push_back(sideBySide(frame.original, frame.result));
    }
    const double shape = static_cast<double>(pairs.front().height) / pairs.front().width;
    constexpr double screen = 1.6;
    return contactSheet(pairs,
                        std::max(1, static_cast<int>(std::lround(std::sqrt(moments * shape * screen)))));
}

FrameImage pictureFor(const PreviewArguments& arguments) {
    const auto library = makeFFmpegMediaLibrary(MediaLogging::silent);
    const auto asset = library->open(arguments.input, isInterrupted);
    if (asset->videoTracks().empty()) throw ZEBConverterError::noVideoTrack();
    const int threads = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    const SourceInfo source = sourceInfo(asset->videoTracks().front());
    const Settings settings =
        settleAutomatic(*asset, settingsFor(arguments, arguments.input, source), threads, isInterrupted, {});
    Preview preview(*asset, settings, threads, isInterrupted);
    if (arguments.sheet) return sheetOf(preview, *arguments.sheet);
    PreviewFrame frame = preview.frame(preview.frameAt(arguments.at));
    if (arguments.sideBySide) return sideBySide(frame.original, frame.result);
    return arguments.original ? std::move(frame.original) : std::move(frame.result);
}

void writePicture(const FrameImage& image, const PreviewArguments& arguments) {
    const auto bytes =
        makeFFmpegFilmLibrary(MediaLogging::silent)->encodePNG(image.pixels, image.width, image.height);
    StagedOutput output(withoutLastPiece(arguments.output), termsOf(arguments));
    const auto file = output.create(lastPiece(arguments.output));
    file->write(bytes);
    file->close();
    output.commit();
}

ExitCode preview(const PreviewArguments& arguments, Console& console) {
    const auto complainAbout = [&console](const std::string& file) {
        const Failure failure = describeFailureOf(file);
        console.complain(failure.text);
        return failure.exitCode;
    };
    checkRequest(arguments);
    try {
        OutputPlace(arguments.output, termsOf(arguments)).check(arguments.input);
    } catch (const PlatformError&) {
        return complainAbout(arguments.output);
    }
    const SettingsOutput settingsOutput(arguments, arguments.force, console);
    if (!settingsOutput.check(arguments.input)) return ExitCode::unwritableOutput;
    FrameImage image;
    try {
        image = pictureFor(arguments);
    } catch (...) {
        return complainAbout(arguments.input);
    }
    try {
        writePicture(image, arguments);
    } catch (...) {
        return complainAbout(arguments.output);
    }
    return settingsOutput.write() ? ExitCode::done : ExitCode::unwritableOutput;
}

std::optional<TimePoint> timePoint(std::string_view text) {
    return parseTimePoint(text);
}

constexpr std::array fileOptions = {
    Option{.names = "INPUT",
           .placeholder = " ",
           .help = "A video file",
           .take = anyText<&PreviewArguments::input>,
           .isRequired = true},
    Option{.names = "-o,--output",
           .placeholder = "PICTURE",
           .help = "The PNG file to write (required)",
           .expected = "a file",
           .take = fileName<&PreviewArguments::output>,
           .isRequired = true},
    Option{.names = "--at",
           .placeholder = "TIME",
           .help = "The moment: seconds, M:SS, H:MM:SS or a percentage of the film [50%]",
           .expected = "a time (seconds, M:SS or H:MM:SS, with decimals) or a percentage",
           .take = parsed<&PreviewArguments::at, timePoint>},
    Option{.names = "--sheet",
           .placeholder = "N",
           .help = "Show N moments of the film, original and result",
           .expected = "a whole number from 1 to 64",
           .take = number<&PreviewArguments::sheet, 1, mostMoments>,
           .excludes = "--at"},
    Option{.names = "--original",
           .placeholder = "",
           .help = "Show the film's picture at the same size",
           .flag = flag<&PreviewArguments::original>,
           .excludes = "--sheet"},
    Option{.names = "--side-by-side",
           .placeholder = "",
           .help = "Show original and result",
           .flag = flag<&PreviewArguments::sideBySide>,
           .excludes = "--sheet,--original"},
    Option{.names = "--force",
           .placeholder = "",
           .help = "Replace files that exist",
           .flag = flag<&PreviewArguments::force>},
};

constexpr auto previewOptions = joined(
    fileOptions, settingsFileOptions<PreviewArguments>, saveSettingsOptions<PreviewArguments>,
    sizeOptions<PreviewArguments>, filmShapeOptions<PreviewArguments>, stretchOptions<PreviewArguments>,
    rateOptions<PreviewArguments>, rangeOptions<PreviewArguments>, colourOptions<PreviewArguments>);

}  // namespace

constinit const Command previewCommand = command<preview>(
    "preview", "Show a frame of a movie before it is made", previewOptions,
    "The result has the very pixels of the movie. \"zeb encode --help\" explains the settings.");

}  // namespace zeb::cli
