// The lights that the program knows, and what each colour is on their wires.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

enum class Family { Framed, Plain, Levels };

struct LightKind {
    std::uint16_t nVendorID, nProductID;
    std::uint8_t byPrimaryUsage; ///< of the first collection
    Family family;
    std::uint8_t bySecondUsage = 0; ///< of a second collection; 0 for none

    bool operator==(const LightKind&) const = default;
};

inline constexpr LightKind kLightKinds[] = {
    {0x0E53, 0x2516, 1, Family::Levels}, {0x0E53, 0x2517, 1, Family::Levels},
    {0x0E53, 0x2519, 1, Family::Levels}, {0x2C0D, 0x0003, 1, Family::Levels},
    {0x2C0D, 0x0006, 1, Family::Levels}, {0x1130, 0x0001, 3, Family::Framed},
    {0x1130, 0x0002, 3, Family::Framed}, {0x1130, 0x1E00, 1, Family::Plain},
};
inline constexpr LightKind kLevelsLight = kLightKinds[3];
inline constexpr LightKind kFramedLight = kLightKinds[5];
inline constexpr LightKind kPlainLight = kLightKinds[7];

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
constexpr std::uint8_t kOffBit = 0x01, kFlashBit = 0x04, kSlow = 0x08, kMedium = 0x10, kFast = 0x20;

Bytes framedReport(std::uint8_t byCode);
Bytes plainReport(std::uint8_t byCode);
/// Levels go out as red, blue, green.
Bytes levelsReport(const Colour& colour, std::uint8_t byControl = 0);

/// What lights with codes are sent for a colour; for lights with levels the last of the four reports.
Bytes reportOf(Family family, int nColour);
/// Whether the report switches a light off.
bool isOff(Family family, const Bytes& report);
/// A vendor-defined descriptor with 8 bytes in, and 8 or 64 bytes out.
Bytes reportDescriptor(const LightKind& kind);
std::string text(const Bytes& report);
