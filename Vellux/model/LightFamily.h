// The families of lights, by the reports that they take.
#pragma once

#include <cstdint>

namespace vellux {

enum class LightFamily : std::uint8_t {
    None,       ///< no light, or one whose reports are not known
    FramedCode, ///< a colour code in a frame, 8 bytes
    PlainCode,  ///< a colour code and zeros, 64 bytes
    Levels,     ///< red, green and blue levels and control bits, 8 bytes; flashes by itself ("V30")
};

/// The family of a device type, which discovery gives each light: 1, 2, or one of 3, 4, 6 and 7.
constexpr LightFamily lightFamily(std::uint8_t byType) {
    constexpr unsigned kTypesWithLevels = 0xD8; // a bit each, none for 5; kept-on-purpose:type-5
    if (byType == 1)
        return LightFamily::FramedCode;
    if (byType == 2)
        return LightFamily::PlainCode;
    return byType <= 7 && ((kTypesWithLevels >> byType) & 1U) != 0 ? LightFamily::Levels : LightFamily::None;
}

/// Whether lights of the family take a colour code.
constexpr bool takesCodes(LightFamily family) {
    return family == LightFamily::FramedCode || family == LightFamily::PlainCode;
}

} // namespace vellux
