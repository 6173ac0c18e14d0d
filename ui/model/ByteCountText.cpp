#include "ui/model/ByteCountText.h"

#include <array>

#include "platform/text/TextFormat.h"
#include "platform/text/TextLocale.h"

namespace zeb {
namespace {

std::string inUnit(std::uint64_t bytes, double unit, const char* name) {
    const std::array<TextArgument, 2> arguments = {static_cast<double>(bytes) / unit, std::string(name)};
    return formatText("%.1f %@", arguments, textLocale().decimalMark);
}

}  // namespace

std::string megabytesText(std::uint64_t bytes) {
    return inUnit(bytes, 1e6, "MB");
}

std::string byteCountText(std::uint64_t bytes) {
    // What would round up to 1000.0 of a unit is one of the next.
    if (bytes < 999'950) return inUnit(bytes, 1e3, "kB");
    if (bytes < 999'950'000) return megabytesText(bytes);
    if (bytes < 999'950'000'000) return inUnit(bytes, 1e9, "GB");
    return inUnit(bytes, 1e12, "TB");
}

}  // namespace zeb
