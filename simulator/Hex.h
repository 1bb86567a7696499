// Bytes as lower-case hexadecimal digits, without blanks.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vellux::simulator {

inline std::string hexOf(std::span<const std::uint8_t> bytes) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string strHex;
    for (const std::uint8_t by : bytes) {
        strHex += kDigits[by >> 4];
        strHex += kDigits[by & 0x0F];
    }
    return strHex;
}

} // namespace vellux::simulator
