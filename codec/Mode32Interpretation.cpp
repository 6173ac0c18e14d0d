#include "codec/Mode32Interpretation.h"

namespace zeb {
namespace {

struct Names {
    std::string_view storedValue;
    std::string_view label;
};

/// In the order of the cases.
constexpr std::array<Names, allMode32Interpretations.size()> names = {{
    {"rgb565BE", "RGB565 (BE)"},
    {"rgb565LE", "RGB565 (LE)"},
    {"qpcPackedBE", "QPC Packed (BE)"},
    {"qpcPackedLE", "QPC Packed (LE)"},
}};

}  // namespace

std::string_view storedValue(Mode32Interpretation interpretation) {
    return names[static_cast<std::size_t>(interpretation)].storedValue;
}

std::string_view label(Mode32Interpretation interpretation) {
    return names[static_cast<std::size_t>(interpretation)].label;
}

std::optional<Mode32Interpretation> mode32InterpretationFrom(std::string_view storedValue) {
    for (const Mode32Interpretation interpretation : allMode32Interpretations) {
        if (zeb::storedValue(interpretation) == storedValue) return interpretation;
    }
    return std::nullopt;
}

}  // namespace zeb
