#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace zeb {

/// Layout of the two bytes b0 (first) and b1 of a 16-bit high-colour pixel; QL software uses several. BE: b0
/// is the high byte of the value; LE: b1 is. RGB565: red in bits 15-11, green in 10-5, blue in 4-0. QPC
/// Packed: red in bits 7-3, green in 15-13 (high bits) and 2-0 (low bits), blue in 12-8.
enum class Mode32Interpretation { rgb565BE, rgb565LE, qpcPackedBE, qpcPackedLE };

/// All cases in the order of menus.
inline constexpr std::array allMode32Interpretations = {
    Mode32Interpretation::rgb565BE, Mode32Interpretation::rgb565LE, Mode32Interpretation::qpcPackedBE,
    Mode32Interpretation::qpcPackedLE};

/// Returns the name of the case as stored in settings: "rgb565LE".
std::string_view storedValue(Mode32Interpretation interpretation);

/// Returns the case with this name; nothing for an unknown name.
std::optional<Mode32Interpretation> mode32InterpretationFrom(std::string_view storedValue);

/// Returns the label of the case in menus: "RGB565 (LE)".
std::string_view label(Mode32Interpretation interpretation);

}  // namespace zeb
