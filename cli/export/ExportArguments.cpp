#include "cli/export/ExportArguments.h"

#include <algorithm>
#include <cctype>
#include <limits>

#include "cli/Options.h"

namespace zeb::cli {
namespace {

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

}  // namespace

std::optional<std::int64_t> timeFrom(std::string_view text) {
    constexpr int mostHours = 100'000;
    constexpr std::size_t mostDecimals = 6;
    std::string_view decimals;
    if (const std::size_t point = text.find('.'); point != std::string_view::npos) {
        decimals = text.substr(point + 1);
        text = text.substr(0, point);
        if (decimals.empty() || decimals.size() > mostDecimals) return std::nullopt;
    }
    std::int64_t seconds = 0;
    // Below the first one, minutes and seconds end at 59.
    for (int part = 0; part < 3; ++part) {
        const std::size_t colon = text.find(':');
        const auto value = wholeNumber(text.substr(0, colon), 0, part == 0 ? mostHours * 3600 : 59);
        if (!value) return std::nullopt;
        seconds = seconds * 60 + *value;
        if (colon == std::string_view::npos) {
            std::string micro(decimals);
            micro.resize(mostDecimals, '0');
            const auto rest = wholeNumber(micro, 0, 999'999);
            if (!rest || micro.front() == '-') return std::nullopt;
            return seconds * 1'000'000 + *rest;
        }
        text = text.substr(colon + 1);
    }
    return std::nullopt;
}

void declareExportArguments(CLI::App& parser, ExportArguments& arguments) {
    constexpr const char* aTime = "a time (seconds, M:SS or H:MM:SS, with up to six decimals)";
    parser.add_option("FILE", arguments.input, "A ZEB movie")->required()->option_text(" ");
    addOption<std::string>(parser, "-o,--output", arguments.output, notEmpty, "a file or folder", "OUT",
                           "What to make: its ending tells the format (see below; required)")
        ->required();
    addChoice(parser, "--format", arguments.format, formats, "one of png, wav, gif, mp4, mkv, webm", "NAME",
              "png, wav, gif, mp4, mkv or webm, whatever OUT's ending");
    CLI::Option* frame =
        addOption<int>(parser, "--frame", arguments.frame, numberBetween(0, highestFrame),
                       "a whole number from 0 to 2147483647", "N", "Only frame N, counted from 0 (PNG)");
    CLI::Option* at = addOption<std::int64_t>(parser, "--at", arguments.at, timeFrom, aTime, "TIME",
                                              "Only the frame on screen at TIME (PNG)");
    CLI::Option* from = addOption<std::int64_t>(parser, "--from", arguments.from, timeFrom, aTime, "TIME",
                                                "Begin at TIME: seconds, M:SS or H:MM:SS, with decimals [0]");
    CLI::Option* to = addOption<std::int64_t>(parser, "--to", arguments.to, timeFrom, aTime, "TIME",
                                              "End before TIME [the movie's end]");
    frame->excludes(at)->excludes(from)->excludes(to);
    at->excludes(from)->excludes(to);
    addOption<int>(parser, "--scale", arguments.scale, numberBetween(1, largestScale),
                   "a whole number from 1 to 64", "N",
                   "Make every pixel N x N, with sharp edges [1; 2 for MP4 and WebM of Mode 4]");
    addOption<Mode32Interpretation>(
        parser, "--interpretation", arguments.interpretation, interpretationFrom,
        "one of rgb565be, rgb565le, qpcpackedbe, qpcpackedle", "NAME",
        "How Mode 32 pixels are read: rgb565be, rgb565le, qpcpackedbe or qpcpackedle [rgb565le]");
    parser.add_flag("--force", arguments.force, "Replace files that exist");
    addReportingOptions(parser, arguments.progress, arguments.verbose);
}

}  // namespace zeb::cli
