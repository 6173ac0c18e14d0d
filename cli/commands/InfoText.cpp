#include "cli/commands/InfoText.h"

#include <cmath>

#include "cli/Json.h"
#include "cli/Text.h"
#include "platform/text/NumberText.h"
#include "platform/text/TextFormat.h"

namespace zeb::cli {
namespace {

std::string modeText(int mode) {
    if (mode == 32) return "32 (16-bit high colour)";
    if (mode == 4) return "4 (black, red, green, white)";
    return std::to_string(mode) + " (unknown)";
}

std::string soundText(const ZEBHeader& header) {
    const int channels = header.audioChannels;
    if (channels == 0) return "none";
    const std::string layout = channels == 1   ? "mono"
                               : channels == 2 ? "stereo"
                                               : std::to_string(channels) + " channels";
    return layout + ", " + std::to_string(header.sampleRate) + " Hz, 8 bits";
}

std::string exactBytes(std::uint64_t bytes) {
    const std::string rounded = byteText(bytes);
    return bytes < 1000 ? rounded : rounded + " (" + std::to_string(bytes) + " bytes)";
}

}  // namespace

std::string infoText(const std::string& file, const MovieFacts& facts) {
    const ZEBHeader& header = facts.header;
    std::string text = printable(file) + "\n";
    const auto line = [&text](const char* label, const std::string& value) {
        constexpr std::size_t labelWidth = 15;
        std::string padded = label;
        padded.resize(labelWidth, ' ');
        text += "  " + padded + value + "\n";
    };
    line("Title", printable(header.title));
    line("Size", std::to_string(header.width) + "x" + std::to_string(header.height));
    line("Rate", countText(header.fps, "frame", "frames") + " per second");
    line("Mode", modeText(header.mode));
    line("Frames", std::to_string(facts.wholeFrames));
    line("Duration", durationText(static_cast<double>(facts.wholeSeconds)));
    line("Sound", soundText(header));
    line("Loop", facts.isLooping() ? "yes" : "no");
    line("File size", exactBytes(facts.fileSize));
    line("Data rate",
         byteText(static_cast<std::uint64_t>(std::llround(facts.bytesPerSecond))) + " per second");
    line("Largest block", exactBytes(facts.largestBlock));
    line("Finished", facts.isFinished ? "yes"
                                      : "no, " + std::to_string(facts.wholeFrames) + " of " +
                                            std::to_string(header.frameCount) + " frames are there");
    return text;
}

std::string infoJson(const std::string& file, const MovieFacts& facts) {
    const ZEBHeader& header = facts.header;
    return jsonLine({
        {"file", file},
        {"title", header.title},
        {"width", header.width},
        {"height", header.height},
        {"framesPerSecond", header.fps},
        {"mode", header.mode},
        {"frames", facts.wholeFrames},
        {"seconds", facts.wholeSeconds},
        {"soundChannels", header.audioChannels},
        {"soundRate", header.audioChannels > 0 ? header.sampleRate : 0},
        {"loop", facts.isLooping()},
        {"fileSize", facts.fileSize},
        {"bytesPerSecond", facts.bytesPerSecond},
        {"largestBlock", facts.largestBlock},
        {"finished", facts.isFinished},
    });
}

}  // namespace zeb::cli
