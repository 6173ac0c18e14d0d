#include "conversion/plan/RequestedSettings.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cstdint>

#include "platform/text/NumberText.h"

namespace zeb {
namespace {

using Form = SettingRow::Form;
using Text = std::string_view;
using Value = std::optional<std::string>;

template <typename Type>
struct Word {
    const char* text;
    Type value;
};

template <typename Type, std::size_t count>
bool takeWord(const std::array<Word<Type>, count>& words, Text text, Type& value) {
    const auto found = std::ranges::find_if(words, [text](const auto& word) { return text == word.text; });
    if (found == words.end()) return false;
    value = found->value;
    return true;
}

template <typename Type, std::size_t count>
std::string wordOf(const std::array<Word<Type>, count>& words, Type value) {
    return std::ranges::find_if(words, [value](const auto& word) { return word.value == value; })->text;
}

constexpr std::array truths = {Word<bool>{"false", false}, Word<bool>{"true", true}};
constexpr std::array soundLayouts = {Word<int>{"off", 0}, Word<int>{"mono", 1}, Word<int>{"stereo", 2}};
constexpr std::array modes = {Word<int>{"32", 32}, Word<int>{"4", 4}};
constexpr std::array rotations = {Word<int>{"0", 0}, Word<int>{"90", 90}, Word<int>{"180", 180},
                                  Word<int>{"270", 270}};
constexpr std::array kinds = {Word<Colours::Kind>{"levels", Colours::Kind::levels},
                              Word<Colours::Kind>{"natural", Colours::Kind::natural}};
using Dithering = Colours::Dithering;
constexpr std::array ditherings = {
    Word<Dithering>{"none", Dithering::none}, Word<Dithering>{"diffusion", Dithering::diffusion},
    Word<Dithering>{"ordered", Dithering::ordered}, Word<Dithering>{"fine", Dithering::fine},
    Word<Dithering>{"rows", Dithering::rows}};
constexpr std::array fits = {Word<Shape::Fit>{"scale", Shape::Fit::scale},
                             Word<Shape::Fit>{"pad", Shape::Fit::pad},
                             Word<Shape::Fit>{"fill", Shape::Fit::fill}};

// Limits of the container's 16-bit fields.
constexpr int highestSide = 65535;
constexpr int highestRate = 65535;
constexpr int highestTrack = 1'000'000;

bool takeNumber(Text text, int lowest, int highest, int& value) {
    const std::optional<int> number = wholeNumber(text, lowest, highest);
    if (number) value = *number;
    return number.has_value();
}

bool takeDecimal(Text text, double lowest, double highest, double& value) {
    const std::optional<double> number = decimalNumber(text, lowest, highest);
    if (number) value = *number;
    return number.has_value();
}

std::string decimal(double value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

/// Splits "AxB" or "A:B"; returns false without a separator.
bool splitAt(Text text, Text separators, Text& left, Text& right) {
    const std::size_t at = text.find_first_of(separators);
    if (at == Text::npos) return false;
    left = text.substr(0, at);
    right = text.substr(at + 1);
    return true;
}

bool takeSides(Text text, Text separators, int highest, int& width, int& height) {
    Text left, right;
    if (!splitAt(text, separators, left, right)) return false;
    const std::optional<int> first = wholeNumber(left, 1, highest);
    const std::optional<int> second = wholeNumber(right, 1, highest);
    if (!first || !second) return false;
    width = *first;
    height = *second;
    return true;
}

std::string sides(int width, int height, const char* separator) {
    return std::to_string(width) + separator + std::to_string(height);
}

bool takeSize(RequestedSettings& requested, Text text) {
    FrameSize size;
    if (!takeSides(text, "xX", highestSide, size.width, size.height)) return false;
    requested.size = size;
    return true;
}

bool takeCrop(RequestedSettings& requested, Text text) {
    Shape& shape = requested.others.shape;
    if (text == "none" || text == "auto") {
        shape.crop = text == "auto" ? Shape::Crop::automatic : Shape::Crop::none;
        shape.part = {};
        return true;
    }
    Text size, place, left, top;
    PixelRectangle part;
    constexpr int highest = 1'000'000;
    if (!splitAt(text, "+", size, place) || !splitAt(place, "+", left, top)) return false;
    if (!takeSides(size, "xX", highest, part.width, part.height)) return false;
    if (!takeNumber(left, 0, highest, part.x) || !takeNumber(top, 0, highest, part.y)) return false;
    shape.crop = Shape::Crop::rectangle;
    shape.part = part;
    return true;
}

Value cropText(const RequestedSettings& requested) {
    const Shape& shape = requested.others.shape;
    if (shape.crop == Shape::Crop::none) return "none";
    if (shape.crop == Shape::Crop::automatic) return "auto";
    const PixelRectangle& part = shape.part;
    return sides(part.width, part.height, "x") + "+" + sides(part.x, part.y, "+");
}

bool takeFit(RequestedSettings& requested, Text text) {
    requested.others.preserveAspect = text != "stretch";
    if (text == "stretch") {
        requested.others.shape.fit = Shape::Fit::scale;
        return true;
    }
    return takeWord(fits, text, requested.others.shape.fit);
}

Value fitText(const RequestedSettings& requested) {
    const bool stretches =
        requested.others.shape.fit == Shape::Fit::scale && !requested.others.preserveAspect;
    return stretches ? "stretch" : wordOf(fits, requested.others.shape.fit);
}

bool takeColour(RequestedSettings& requested, Text text) {
    RGBColour colour{};
    if (text.size() != 7 || text[0] != '#') return false;
    for (std::size_t i = 0; i < colour.size(); ++i) {
        const char* digits = text.data() + 1 + 2 * i;
        const auto [rest, error] = std::from_chars(digits, digits + 2, colour[i], 16);
        if (error != std::errc() || rest != digits + 2) return false;
    }
    requested.others.shape.padColour = colour;
    return true;
}

Value colourText(const RequestedSettings& requested) {
    constexpr const char* digits = "0123456789abcdef";
    std::string text = "#";
    for (const std::uint8_t value : requested.others.shape.padColour) {
        text += digits[value >> 4];
        text += digits[value & 15];
    }
    return text;
}

/// 512 x 256 pixels fill a screen of 4:3.
constexpr PixelShape qlPixel{2, 3};

bool takePixelShape(RequestedSettings& requested, Text text) {
    PixelShape& shape = requested.others.shape.pixelShape;
    if (text == "square") return shape = {}, true;
    if (text == "ql") return shape = qlPixel, true;
    constexpr int highest = 100;
    return takeSides(text, ":", highest, shape.width, shape.height);
}

Value pixelShapeText(const RequestedSettings& requested) {
    const PixelShape& shape = requested.others.shape.pixelShape;
    if (shape == PixelShape{}) return "square";
    if (shape == qlPixel) return "ql";
    return sides(shape.width, shape.height, ":");
}

bool takeDithering(RequestedSettings& requested, Text text) {
    Dithering dithering{};
    if (!takeWord(ditherings, text, dithering)) return false;
    requested.others.colours.dithering = dithering;
    requested.others.dither = dithering == Dithering::diffusion;
    return true;
}

Value ditheringText(const RequestedSettings& requested) {
    const std::optional<Dithering>& dithering = requested.others.colours.dithering;
    if (dithering) return wordOf(ditherings, *dithering);
    return requested.others.dither ? Value("diffusion") : std::nullopt;
}

template <std::optional<TimePoint> TimeRange::*end>
bool takeTime(RequestedSettings& requested, Text text) {
    const std::optional<TimePoint> time = parseTimePoint(text);
    if (time) requested.others.time.*end = *time;
    return time.has_value();
}

template <std::optional<TimePoint> TimeRange::*end>
Value timeText(const RequestedSettings& requested) {
    const std::optional<TimePoint>& time = requested.others.time.*end;
    return time ? Value(timePointText(*time)) : std::nullopt;
}

// The settings of one type.

template <auto group, auto field, int lowest, int highest>
constexpr SettingRow numberRow(const char* path, const char* expected) {
    return {path, expected, Form::number,
            [](RequestedSettings& requested, Text text) {
                return takeNumber(text, lowest, highest, (requested.others.*group).*field);
            },
            [](const RequestedSettings& requested) {
                return Value(std::to_string((requested.others.*group).*field));
            }};
}

/// The limits are hundredths.
template <auto group, auto field, int lowest, int highest>
constexpr SettingRow decimalRow(const char* path, const char* expected) {
    return {
        path, expected, Form::number,
        [](RequestedSettings& requested, Text text) {
            return takeDecimal(text, lowest / 100.0, highest / 100.0, (requested.others.*group).*field);
        },
        [](const RequestedSettings& requested) { return Value(decimal((requested.others.*group).*field)); }};
}

template <auto group, auto field>
constexpr SettingRow truthRow(const char* path) {
    return {path, "true or false", Form::truth,
            [](RequestedSettings& requested, Text text) {
                return takeWord(truths, text, (requested.others.*group).*field);
            },
            [](const RequestedSettings& requested) {
                return Value(wordOf(truths, (requested.others.*group).*field));
            }};
}

constexpr const char* aTime = "a time (seconds, M:SS or H:MM:SS, with decimals) or a percentage";

constexpr std::array rows = {
    SettingRow{"title", "a text", Form::text,
               [](RequestedSettings& requested, Text text) {
                   requested.title = text;
                   return true;
               },
               [](const RequestedSettings& requested) { return requested.title; }},
    SettingRow{"size", "WIDTHxHEIGHT with sides from 1 to 65535", Form::text, takeSize,
               [](const RequestedSettings& requested) {
                   const auto& size = requested.size;
                   return size ? Value(sides(size->width, size->height, "x")) : std::nullopt;
               }},
    SettingRow{"fps", "a whole number from 1 to 65535", Form::number,
               [](RequestedSettings& requested, Text text) {
                   return takeNumber(text, 1, highestRate, requested.fps.emplace());
               },
               [](const RequestedSettings& requested) {
                   return requested.fps ? Value(std::to_string(*requested.fps)) : std::nullopt;
               }},
    SettingRow{"mode", "one of 32, 4", Form::number,
               [](RequestedSettings& requested, Text text) {
                   return takeWord(modes, text, requested.others.qlModeNumber);
               },
               [](const RequestedSettings& requested) {
                   return Value(std::to_string(requested.others.qlModeNumber));
               }},
    SettingRow{
        "loop", "true or false", Form::truth,
        [](RequestedSettings& requested, Text text) { return takeWord(truths, text, requested.others.loop); },
        [](const RequestedSettings& requested) { return Value(wordOf(truths, requested.others.loop)); }},
    SettingRow{"sound.channels", "one of off, mono, stereo", Form::text,
               [](RequestedSettings& requested, Text text) {
                   Settings& settings = requested.others;
                   if (!takeWord(soundLayouts, text, settings.audioChannels)) return false;
                   settings.includeAudio = settings.audioChannels > 0;
                   return true;
               },
               [](const RequestedSettings& requested) {
                   return Value(wordOf(soundLayouts, requested.others.audioChannels));
               }},
    SettingRow{"sound.track", "a whole number from 1 to 1000000", Form::number,
               [](RequestedSettings& requested, Text text) {
                   int& index = requested.others.audioTrackIndex;
                   return takeNumber(text, 1, highestTrack, index) && (--index, true);
               },
               [](const RequestedSettings& requested) {
                   return Value(std::to_string(requested.others.audioTrackIndex + 1));
               }},
    SettingRow{"shape.crop", "none, auto or WxH+X+Y", Form::text, takeCrop, cropText},
    SettingRow{"shape.fit", "one of scale, stretch, pad, fill", Form::text, takeFit, fitText},
    SettingRow{"shape.padColour", "a colour #RRGGBB", Form::text, takeColour, colourText},
    SettingRow{"shape.pixelShape", "square, ql or W:H with numbers from 1 to 100", Form::text, takePixelShape,
               pixelShapeText},
    SettingRow{"shape.rotate", "one of 0, 90, 180, 270", Form::number,
               [](RequestedSettings& requested, Text text) {
                   return takeWord(rotations, text, requested.others.shape.rotation);
               },
               [](const RequestedSettings& requested) {
                   return Value(std::to_string(requested.others.shape.rotation));
               }},
    truthRow<&Settings::shape, &Shape::flip>("shape.flip"),
    numberRow<&Settings::look, &Look::brightness, -100, 100>("look.brightness",
                                                             "a whole number from -100 to 100"),
    numberRow<&Settings::look, &Look::contrast, -100, 100>("look.contrast",
                                                           "a whole number from -100 to 100"),
    numberRow<&Settings::look, &Look::saturation, 0, 200>("look.saturation", "a whole number from 0 to 200"),
    decimalRow<&Settings::look, &Look::gamma, 20, 500>("look.gamma", "a number from 0.2 to 5"),
    truthRow<&Settings::look, &Look::autoLevels>("look.autoLevels"),
    SettingRow{"colours.kind", "one of levels, natural", Form::text,
               [](RequestedSettings& requested, Text text) {
                   return takeWord(kinds, text, requested.others.colours.kind);
               },
               [](const RequestedSettings& requested) {
                   return Value(wordOf(kinds, requested.others.colours.kind));
               }},
    SettingRow{"colours.dithering", "one of none, diffusion, ordered, fine, rows", Form::text, takeDithering,
               ditheringText},
    decimalRow<&Settings::colours, &Colours::tone, 100, 300>("colours.tone", "a number from 1 to 3"),
    decimalRow<&Settings::colours, &Colours::toe, 0, 25>("colours.toe", "a number from 0 to 0.25"),
    numberRow<&Settings::colours, &Colours::sharpen, 0, 200>("colours.sharpen",
                                                             "a whole number from 0 to 200"),
    SettingRow{"time.from", aTime, Form::text, takeTime<&TimeRange::from>, timeText<&TimeRange::from>},
    SettingRow{"time.to", aTime, Form::text, takeTime<&TimeRange::to>, timeText<&TimeRange::to>},
};

}  // namespace

std::span<const SettingRow> settingRows() {
    return rows;
}

const SettingRow& settingRow(std::string_view path) {
    const auto* found =
        std::ranges::find_if(rows, [path](const SettingRow& row) { return path == row.path; });
    assert(found != rows.end());
    return *found;
}

Settings settingsFor(const RequestedSettings& requested, const std::string& input, const SourceInfo& source) {
    const FrameSize proposed = {proposedSide(source.width), proposedSide(source.height)};
    const FrameSize size = requested.size.value_or(proposed);
    Settings settings = requested.others;
    settings.title = requested.title.value_or(proposedTitle(input));
    settings.width = size.width;
    settings.height = size.height;
    settings.fps = requested.fps.value_or(proposedRate(source.fps));
    settings.fpsFromSource = !requested.fps.has_value();
    return settings;
}

}  // namespace zeb
