#pragma once

#include <cstdint>
#include <string>

namespace zeb {

/// Bytes in megabytes (10^6), with one decimal, in the user's locale: "3.4 MB".
std::string megabytesText(std::uint64_t bytes);

/// Bytes in the decimal unit that suits them: "1.2 kB", "3.4 MB", "4.3 GB".
std::string byteCountText(std::uint64_t bytes);

}  // namespace zeb
