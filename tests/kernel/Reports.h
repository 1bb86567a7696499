// What each colour is on the wires of the lights.
#pragma once

#include "kernel/LightKind.h"

#include <cstdint>

using vellux::simulator::Bytes;
using vellux::simulator::LightModel;

/// Colours by their index in the window's longer list. Lights with codes know no orange.
struct Colour {
    const char* strName;
    std::uint8_t byFramedCode, byPlainCode;
    std::uint8_t byRed, byGreen, byBlue;
};

inline constexpr Colour kColours[] = {
    {"Red", 0xEF, 0x60, 255, 0, 0},      {"Green", 0xDF, 0xD8, 0, 150, 0},
    {"Yellow", 0xCF, 0x40, 255, 60, 0},  {"Purple", 0xAF, 0x20, 128, 0, 128},
    {"Cyan", 0x9F, 0x17, 0, 255, 255},   {"Blue", 0xBF, 0x35, 0, 0, 150},
    {"White", 0x8F, 0x07, 255, 125, 50}, {"Orange", 0, 0, 255, 15, 0},
    {"None", 0xFF, 0x73, 0, 0, 0},
};
enum { kRed, kGreen, kYellow, kPurple, kCyan, kBlue, kWhite, kOrange, kNone };

/// The control byte of lights with levels.
constexpr std::uint8_t kOffBit = 0x01, kFlashBit = 0x04, kFast = 0x20;

/// Levels go out as red, blue, green.
Bytes levelsReport(const Colour& colour, std::uint8_t byControl = 0);

/// What lights with codes are sent for a colour; for lights with levels the last of the four reports.
Bytes reportOf(LightModel model, int nColour);
/// Whether the report switches a light off.
bool isOff(LightModel model, const Bytes& report);
