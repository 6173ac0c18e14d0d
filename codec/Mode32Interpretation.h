#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace zeb {

/// How the two bytes b0 (first) and b1 of a 16-bit high-colour pixel are read: several orders exist in the QL
/// world. The RGB565 cases take red from the bits 15-11 of the value, green from 10-5, blue from 4-0; the QPC
/// Packed cases take red from 7-3, green from 15-13 (its high bits) and 2-0 (its low bits), blue from 12-8.
/// BE reads b0 as the high byte, LE b1.
enum class Mode32Interpretation { rgb565BE, rgb565LE, qpcPackedBE, qpcPackedLE };

/// All cases in the order in which they are offered.
inline constexpr std::array allMode32Interpretations = {
    Mode32Interpretation::rgb565BE, Mode32Interpretation::rgb565LE, Mode32Interpretation::qpcPackedBE,
    Mode32Interpretation::qpcPackedLE};

/// The case's name, as stored in settings: "rgb565LE".
std::string_view storedValue(Mode32Interpretation interpretation);

/// The case with that name; nothing for another text.
std::optional<Mode32Interpretation> mode32InterpretationFrom(std::string_view storedValue);

/// The case's label for people: "RGB565 (LE)".
std::string_view label(Mode32Interpretation interpretation);

}  // namespace zeb
