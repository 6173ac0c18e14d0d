#include "cli/export/ExportJob.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <utility>

#include "cli/Failure.h"
#include "cli/Text.h"
#include "conversion/plan/OutputName.h"

namespace zeb::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::array endings = {
    std::pair{".png", ExportFormat::png},   std::pair{".wav", ExportFormat::wav},
    std::pair{".gif", ExportFormat::gif},   std::pair{".mp4", ExportFormat::mp4},
    std::pair{".m4v", ExportFormat::mp4},   std::pair{".mkv", ExportFormat::mkv},
    std::pair{".webm", ExportFormat::webm},
};

constexpr const char* numberedPictures = "frame-%05d.png";

std::optional<ExportFormat> formatByEnding(const std::string& path) {
    std::string ending = fs::path(path).extension();
    std::ranges::transform(ending, ending.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const auto& [name, format] : endings) {
        if (ending == name) return format;
    }
    return std::nullopt;
}

const char* endingOf(ExportFormat format) {
    return std::ranges::find(endings, format, [](const auto& entry) { return entry.second; })->first;
}

FilmFormat filmFormat(ExportFormat format) {
    switch (format) {
        case ExportFormat::gif:
            return FilmFormat::gif;
        case ExportFormat::mkv:
            return FilmFormat::matroska;
        case ExportFormat::webm:
            return FilmFormat::webm;
        default:
            return FilmFormat::mp4;
    }
}

}  // namespace

ExportJob planExport(const ExportArguments& arguments) {
    if (arguments.input.empty()) throw UsageError("FILE: a file name is empty");
    const bool isSingle = arguments.frame || arguments.at;
    const bool isFolder = OutputPlace::namesFolder(arguments.output);
    if (!arguments.format && !isFolder && !formatByEnding(arguments.output)) {
        throw UsageError("--output: \"" + arguments.output +
                         "\" does not end in .png, .wav, .gif, .mp4, .mkv or .webm, and --format is missing");
    }
    const ExportFormat format =
        arguments.format ? *arguments.format : formatByEnding(arguments.output).value_or(ExportFormat::png);
    const bool isPNG = isFolder && !arguments.format ? true : format == ExportFormat::png;

    ExportJob job;
    job.input = arguments.input;
    job.output = arguments.output;
    if (isFolder) {
        const fs::path name = isPNG && !isSingle
                                  ? fs::path(numberedPictures)
                                  : fs::path(arguments.input)
                                        .filename()
                                        .replace_extension(endingOf(isPNG ? ExportFormat::png : format));
        job.output = fs::path(arguments.output) / name;
        // For numbered pictures the user has named a folder explicitly.
        if (isPNG && !isSingle) job.settings.terms.missingFolder = OutputTerms::MissingFolder::make;
    }

    ExportSettings& settings = job.settings;
    settings.interpretation = arguments.interpretation.value_or(settings.interpretation);
    settings.scale = arguments.scale;
    settings.from = arguments.from.value_or(0);
    settings.to = arguments.to;
    settings.frame = arguments.frame;
    settings.at = arguments.at;
    if (arguments.force) settings.terms.existing = OutputTerms::Existing::replace;
    if (settings.to && *settings.to <= settings.from) throw UsageError("--to does not lie after --from");
    if (isSingle && !isPNG) throw UsageError("--frame and --at make a PNG picture and nothing else");
    if (isPNG) {
        // A single picture in a folder is named after FILE, whose name may contain a placeholder.
        const bool isNumbered =
            !(isFolder && isSingle) && NumberedName::parse(fs::path(job.output).filename()).has_value();
        if (!isNumbered && !isSingle) {
            throw UsageError("--output: \"" + arguments.output +
                             "\" names one picture: choose it with --frame or --at, or put a number into "
                             "the name (frame-%05d.png)");
        }
        settings.kind = isNumbered ? ExportSettings::Kind::pictures : ExportSettings::Kind::picture;
    } else if (format == ExportFormat::wav) {
        settings.kind = ExportSettings::Kind::sound;
        if (arguments.scale || arguments.interpretation)
            throw UsageError("--scale and --interpretation have no meaning for sound");
    } else {
        settings.kind = ExportSettings::Kind::film;
        settings.format = filmFormat(format);
    }
    return job;
}

}  // namespace zeb::cli
