// The colour index: what the whole program above the driver calls a colour. A position in the colour lists.
#pragma once

#include <cstdint>

constexpr std::int32_t kColourRed = 0;
constexpr std::int32_t kColourGreen = 1;
constexpr std::int32_t kColourYellow = 2;
constexpr std::int32_t kColourPurple = 3;
constexpr std::int32_t kColourOrange = 7; // V30 lights only; in the list without orange this is "None"
constexpr std::int32_t kColourOff = 8;    // "None"
