#include "cli/ThumbnailCommand.h"

#include <CLI/App.hpp>
#include <CLI/Validators.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "cli/Failure.h"
#include "conversion/ExportError.h"
#include "conversion/ReducedImage.h"
#include "format/ZEBReader.h"
#include "platform/ErrorText.h"
#include "platform/FileManager.h"
#include "platform/StagedOutput.h"
#include "platform/ffmpeg/FFmpegFilmLibrary.h"

namespace zeb::cli {
namespace {

constexpr int mostFramesTried = 50;
constexpr int mostPixelsOfASide = 4096;

struct ThumbnailArguments {
    std::string input;
    std::string output;
    int size = 256;
};

/// The movie's first picture; of those that cannot be decoded at its beginning not many are passed over.
FrameImage firstPicture(const std::string& path) {
    ZEBReader reader(path);
    reader.readHeader();
    for (int i = 0; i < mostFramesTried; ++i) {
        if (auto image = reader.nextFrame(false)) return *std::move(image);
    }
    throw ExportError::withoutFirstPicture();
}

void writePicture(const FrameImage& image, const std::string& path) {
    const auto library = makeFFmpegFilmLibrary(MediaLogging::silent);
    const auto bytes = library->encodePNG(image.pixels, image.width, image.height);
    const std::filesystem::path place(path);
    StagedOutput output(place.parent_path().string());
    const auto file = output.create(place.filename().string());
    file->write(bytes);
    file->close();
    output.commit(StagedOutput::Existing::replace);
}

ExitCode makeThumbnail(const ThumbnailArguments& arguments, Console& console) {
    if (files::isSameFile(arguments.input, arguments.output)) {
        console.complain(errorText(OutputRefused::because(arguments.output, {"error_output_is_movie"})));
        return ExitCode::unwritableOutput;
    }
    std::optional<FrameImage> image;
    try {
        image = reducedImage(firstPicture(arguments.input), arguments.size);
    } catch (const std::exception& error) {
        console.complain(textNaming(arguments.input, error));
        return ExitCode::unreadableInput;
    }
    try {
        writePicture(*image, arguments.output);
    } catch (const std::exception& error) {
        console.complain(textNaming(arguments.output, error));
        return ExitCode::unwritableOutput;
    }
    return ExitCode::done;
}

}  // namespace

std::function<ExitCode()> declareThumbnail(CLI::App& parser, Console& console) {
    const auto arguments = std::make_shared<ThumbnailArguments>();
    parser.add_option("INPUT", arguments->input, "A ZEB movie")->required();
    parser.add_option("OUTPUT", arguments->output, "The PNG file to write; one that exists is replaced")
        ->required();
    parser.add_option("--size", arguments->size, "The most pixels of its longer side")
        ->option_text("N")
        ->check(CLI::Range(1, mostPixelsOfASide))
        ->capture_default_str();
    parser.footer(exitCodeHelp);
    return [arguments, &console] { return makeThumbnail(*arguments, console); };
}

}  // namespace zeb::cli
