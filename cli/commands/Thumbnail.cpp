#include "cli/commands/Commands.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "cli/Failure.h"
#include "cli/Interruption.h"
#include "conversion/export/ExportError.h"
#include "conversion/export/FrameScaling.h"
#include "conversion/export/MovieInput.h"
#include "format/ZEBReader.h"
#include "media/FilmWriter.h"
#include "platform/files/OutputPlace.h"
#include "platform/files/StagedOutput.h"
#include "platform/text/ErrorText.h"
#include "platform/text/PathName.h"

namespace zeb::cli {
namespace {

constexpr int mostFramesTried = 50;
constexpr int mostPixelsOfASide = 4096;
constexpr OutputTerms replacing{OutputTerms::Existing::replace, OutputTerms::MissingFolder::refuse};

struct ThumbnailArguments {
    std::string input;
    std::string output;
    int size = 256;
};

/// Returns the first picture that can be decoded among the first `mostFramesTried` frames.
FrameImage firstPicture(const std::string& path) {
    ZEBReader reader([&path] { return std::make_unique<MovieInput>(path, isInterrupted); });
    const std::int64_t frames = std::min<std::int64_t>(reader.readHeader().frameCount, mostFramesTried);
    for (std::int64_t frame = 0; frame < frames; ++frame) {
        if (auto image = reader.nextFrame(false)) return *std::move(image);
    }
    throw ExportError::withoutFirstPicture();
}

void writePicture(const FrameImage& image, const std::string& path) {
    const auto library = makeFFmpegFilmLibrary(MediaLogging::silent);
    const auto bytes = library->encodePNG(image.pixels, image.width, image.height);
    StagedOutput output(withoutLastPiece(path), replacing);
    const auto file = output.create(lastPiece(path));
    file->write(bytes);
    file->close();
    output.commit();
}

ExitCode makeThumbnail(const ThumbnailArguments& arguments, Console& console) {
    const auto complainAbout = [&console](const std::string& file) {
        const Failure failure = describeFailureOf(file);
        console.complain(failure.text);
        return failure.exitCode;
    };
    try {
        OutputPlace(arguments.output, replacing).check(arguments.input);
    } catch (const PlatformError& error) {
        console.complain(errorText(error));
        return ExitCode::unwritableOutput;
    }
    std::optional<FrameImage> image;
    try {
        image = reducedImage(firstPicture(arguments.input), arguments.size);
    } catch (...) {
        return complainAbout(arguments.input);
    }
    try {
        writePicture(*image, arguments.output);
    } catch (...) {
        return complainAbout(arguments.output);
    }
    return ExitCode::done;
}

constexpr Option thumbnailOptions[] = {
    {.names = "INPUT",
     .placeholder = " ",
     .help = "A ZEB movie",
     .take = anyText<&ThumbnailArguments::input>,
     .isRequired = true},
    {.names = "OUTPUT",
     .placeholder = " ",
     .help = "The PNG file to write; one that exists is replaced",
     .take = anyText<&ThumbnailArguments::output>,
     .isRequired = true},
    {.names = "--size",
     .placeholder = "N",
     .help = "Maximum length of the longer side in pixels",
     .expected = "a whole number from 1 to 4096",
     .take = number<&ThumbnailArguments::size, 1, mostPixelsOfASide>},
};

}  // namespace

constinit const Command thumbnailCommand = command<makeThumbnail>(
    "thumbnail", "Make a small picture of a ZEB movie, for file managers", thumbnailOptions, "");

}  // namespace zeb::cli
