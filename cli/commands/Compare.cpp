#include "cli/commands/Commands.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/Failure.h"
#include "cli/Interruption.h"
#include "cli/Json.h"
#include "cli/SettingOptions.h"
#include "cli/Text.h"
#include "conversion/comparison/Comparison.h"
#include "conversion/look/FilmAnalysis.h"
#include "format/ZEBErrors.h"
#include "platform/text/NumberText.h"

namespace zeb::cli {
namespace {

struct CompareArguments : SettingArguments {
    std::string film;
    std::vector<std::string> movies;
    int moments = static_cast<int>(ComparisonSettings{}.moments);
    bool json = false;
};

struct Column {
    Measure measure;
    const char* title;
    int decimals;
    const char* field;  ///< in JSON
};

constexpr std::array<Column, measureCount> measureColumns = {{
    {Measure::deltaE40, "dE40", 2, "deltaE40"},
    {Measure::deltaE20, "dE20", 2, "deltaE20"},
    {Measure::detail, "detail", 3, "detail"},
    {Measure::flicker, "flicker", 3, "flicker"},
    {Measure::similarity, "SSIM", 3, "ssim"},
    {Measure::peakSignal, "PSNR", 2, "psnr"},
    {Measure::blurredPeakSignal, "blurred", 2, "blurredPsnr"},
}};

constexpr const char* nameTitle = "movie";
constexpr const char* worstTitle = "  worst@time";
constexpr const char* momentsTitle = "moments";
constexpr std::size_t momentsWidth = 7;
constexpr std::size_t valueWidth = 14;

std::string padded(std::string text, std::size_t width) {
    const std::size_t length = characterCount(text);
    if (length < width) text.append(width - length, ' ');
    return text;
}

double timeOf(const Comparison& comparison, std::int64_t frame) {
    return static_cast<double>(frame) / comparison.fps;
}

/// "0:12.48": a time that `zeb export --at` takes.
std::string momentText(const Comparison& comparison, std::int64_t frame) {
    // The next hundredth, so that this frame and not the one before it is on screen.
    const std::int64_t hundredths = (frame * 100 + comparison.fps - 1) / comparison.fps;
    const std::string decimals = std::to_string(100 + hundredths % 100).substr(1);
    return clockText(hundredths / 100) + "." + decimals;
}

std::string valueText(const std::optional<double>& value, const Column& column) {
    if (!value) return "-";
    return std::isinf(*value) ? "equal" : decimalText(*value, column.decimals);
}

/// The lines of the table begin with a name; `nameWidth` is the width of the longest one.
std::string lineText(const std::string& name, std::size_t nameWidth, const std::string& moments,
                     const std::array<std::string, measureCount>& values) {
    std::string line = padded(name, nameWidth) + "  " + padded(moments, momentsWidth);
    for (const std::string& value : values)
        line += "  " + padded(value, valueWidth);
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

std::string titleText(std::size_t nameWidth) {
    std::array<std::string, measureCount> titles;
    std::ranges::transform(measureColumns, titles.begin(), &Column::title);
    return lineText(nameTitle, nameWidth, momentsTitle, titles);
}

std::string comparisonText(const std::string& movie, std::size_t nameWidth, const Comparison& comparison) {
    std::array<std::string, measureCount> means;
    std::array<std::string, measureCount> worsts;
    for (std::size_t i = 0; i < measureCount; ++i) {
        const Figure& figure = comparison.figure(measureColumns[i].measure);
        means[i] = valueText(figure.mean, measureColumns[i]);
        worsts[i] = valueText(figure.worst, measureColumns[i]);
        if (figure.worst) worsts[i] += "@" + momentText(comparison, figure.worstFrame);
    }
    return lineText(printable(movie), nameWidth, std::to_string(comparison.moments), means) +
           lineText(worstTitle, nameWidth, "", worsts);
}

/// JSON has no infinity.
JsonValue finite(const std::optional<double>& value) {
    return value && std::isfinite(*value) ? JsonValue(*value) : JsonValue();
}

std::string comparisonJson(const std::string& film, const std::string& movie, const Comparison& comparison) {
    JsonFields fields{{"film", film},
                      {"movie", movie},
                      {"width", comparison.size.width},
                      {"height", comparison.size.height},
                      {"framesPerSecond", comparison.fps},
                      {"frames", comparison.frames},
                      {"moments", comparison.moments},
                      {"momentsLeftOut", comparison.momentsLeftOut},
                      {"flickerPairs", comparison.flickerPairs}};
    for (const Column& column : measureColumns) {
        const Figure& figure = comparison.figure(column.measure);
        const JsonValue time = figure.worst ? JsonValue(timeOf(comparison, figure.worstFrame)) : JsonValue();
        fields.push_back(
            {column.field,
             JsonFields{{"mean", finite(figure.mean)}, {"worst", finite(figure.worst)}, {"worstAt", time}}});
    }
    return jsonLine(fields);
}

std::shared_ptr<const MediaAsset> openFilm(const MediaLibrary& library, const std::string& path) {
    auto film = library.open(path, isInterrupted);
    if (film->videoTracks().empty()) throw ZEBConverterError::noVideoTrack();
    return film;
}

/// Returns the settings that are applied to the film's pictures.
Settings shapeAndTime(const RequestedSettings& requested) {
    Settings settings;
    settings.preserveAspect = requested.others.preserveAspect;
    settings.shape = requested.others.shape;
    settings.time = requested.others.time;
    return settings;
}

ExitCode compareMovies(const CompareArguments& arguments, Console& console) {
    const auto library = makeFFmpegMediaLibrary(MediaLogging::silent);
    const auto complainAbout = [&console](const std::string& file) {
        const Failure failure = describeFailureOf(file);
        console.complain(failure.text);
        return failure.exitCode;
    };
    checkRequest(arguments);
    std::shared_ptr<const MediaAsset> film;
    ComparisonSettings settings;
    settings.moments = arguments.moments;
    try {
        film = openFilm(*library, arguments.film);
        settings.film = settleAutomatic(*film, shapeAndTime(arguments), 1, isInterrupted, {});
    } catch (...) {
        return complainAbout(arguments.film);
    }

    std::size_t nameWidth = characterCount(worstTitle);
    for (const std::string& movie : arguments.movies)
        nameWidth = std::max(nameWidth, characterCount(printable(movie)));
    ExitCode result = ExitCode::done;
    bool hasTitle = arguments.json;
    for (const std::string& movie : arguments.movies) {
        ComparisonCallbacks callbacks;
        callbacks.isCancelled = isInterrupted;
        callbacks.warned = [&](const std::string& line) {
            console.complain(movie + ": " + line, Colour::yellow);
        };
        try {
            const Comparison comparison = compareMovie(*film, movie, settings, callbacks);
            if (!hasTitle) console.write(titleText(nameWidth));
            hasTitle = true;
            console.write(arguments.json ? comparisonJson(arguments.film, movie, comparison)
                                         : comparisonText(movie, nameWidth, comparison));
        } catch (const MediaError& error) {
            // Every other movie would meet the same error of the film.
            const ExitCode code = complainAbout(arguments.film);
            return result == ExitCode::done || error.code() == MediaError::interrupted ? code : result;
        } catch (...) {
            const ExitCode code = complainAbout(movie);
            if (code == ExitCode::interrupted) return code;
            if (result == ExitCode::done) result = code;
        }
        // Stop if standard output failed (closed pipe or full disk).
        if (!console.outIsGood()) return ExitCode::unwritableOutput;
    }
    return result;
}

constexpr int mostMoments = 1'000'000'000;

constexpr std::array ownOptions = {
    Option{.names = "INPUT",
           .placeholder = " ",
           .help = "The video file that the movies were made of",
           .take = anyText<&CompareArguments::film>,
           .isRequired = true},
    Option{.names = "MOVIE",
           .placeholder = "...",
           .help = "ZEB movies",
           .take = append<&CompareArguments::movies>,
           .isRequired = true,
           .isRepeatable = true},
    Option{.names = "--moments",
           .placeholder = "N",
           .help = "Measure at most N moments, spread evenly; 0 = every frame [32]",
           .expected = "a whole number from 0 to 1000000000",
           .take = number<&CompareArguments::moments, 0, mostMoments>},
    Option{.names = "--json",
           .placeholder = "",
           .help = "One JSON object per line instead of text",
           .flag = flag<&CompareArguments::json>},
};

constexpr auto compareOptions = joined(ownOptions, settingsFileOptions<CompareArguments>,
                                       filmShapeOptions<CompareArguments>, rangeOptions<CompareArguments>);

constexpr const char* compareNotes =
    "Prints the mean of each measure, and below it the worst value with its time:\n"
    "  dE40     S-CIELAB colour difference at 40 pixels per degree of view, about 1:1 on a\n"
    "           monitor; 0 = equal\n"
    "  dE20     the same at 20 pixels per degree, about 2:1\n"
    "  detail   correlation of the fine detail; 1 = all is kept, - = the film is flat\n"
    "  flicker  share of the pixels that change from frame to frame although the film stands\n"
    "           still; - = no pair of frames has such pixels\n"
    "  SSIM     structural similarity of the luma; 1 = equal\n"
    "  PSNR     peak signal-to-noise ratio in dB\n"
    "  blurred  the same in blurred linear light, in which a pattern of dots is one colour\n"
    "The film's picture of a frame is the one on screen at the frame's time, stretched to the\n"
    "size of the movie. Movies with another shape or of a part of the film need the same options of\n"
    "shape and time, or --settings; look and colours are not applied to the film's pictures.";

}  // namespace

constinit const Command compareCommand = command<compareMovies>(
    "compare", "Measure how movies differ from their film", compareOptions, compareNotes);

}  // namespace zeb::cli
