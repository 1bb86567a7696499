// The colours of the light: the one table of them.
#pragma once

#include "model/LightFamily.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace vellux {

struct Colour {
    const char* strName;  ///< as the colour lists show it
    std::uint32_t nDrawn; ///< as a view draws a lamp that shows it: 0xRRGGBB
    bool bForCodes;       ///< whether lights that take a colour code have it; all others have every colour
};

/// By colour index. Above the driver a colour is its index: a position in the colour lists.
inline constexpr Colour kColours[] = {
    {"Red", 0xe0342b, true},    {"Green", 0x3fb950, true},   {"Yellow", 0xffd335, true},
    {"Purple", 0x9a45cf, true}, {"Cyan", 0x2cc5d8, true},    {"Blue", 0x2d67e0, true},
    {"White", 0xf7f7f7, true},  {"Orange", 0xf58220, false}, {"None", 0x000000, true},
};
inline constexpr std::int32_t kColourCount = std::size(kColours);

inline constexpr std::int32_t kColourRed = 0;
inline constexpr std::int32_t kColourGreen = 1;
inline constexpr std::int32_t kColourYellow = 2;
inline constexpr std::int32_t kColourPurple = 3;
inline constexpr std::int32_t kColourOff = kColourCount - 1; // "None"

/// Whether the index is one of the table's.
constexpr bool isColour(std::int32_t nColor) {
    return nColor >= 0 && nColor < kColourCount;
}

/// Whether lights of the family have the colour; false for an index out of range, and without a family. The
/// list for lights without orange is one entry shorter, so that its "None" has the index of orange: it
/// doesn't switch these lights off, they keep showing what they showed. (kept-on-purpose:none-without-orange)
constexpr bool canShow(std::int32_t nColor, LightFamily family) {
    if (!isColour(nColor) || family == LightFamily::None)
        return false;
    return family == LightFamily::Levels || kColours[nColor].bForCodes;
}

} // namespace vellux
