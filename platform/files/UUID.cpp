#include "platform/files/UUID.h"

#include <array>
#include <cstdint>
#include <random>

namespace zeb {

std::string makeUUID() {
    std::random_device random;
    std::array<std::uint8_t, 16> bytes{};
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(random());
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // the RFC's variant

    std::string text;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10) text += '-';
        constexpr const char* digits = "0123456789ABCDEF";
        text += {digits[bytes[index] >> 4], digits[bytes[index] & 15]};
    }
    return text;
}

}  // namespace zeb
