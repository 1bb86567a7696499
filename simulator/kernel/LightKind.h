// The lights there are, as a computer meets them on its bus.
#pragma once

#include "light/ReportDecoder.h"

#include <cstdint>
#include <vector>

namespace vellux::simulator {

using Bytes = std::vector<std::uint8_t>;

struct LightKind {
    std::uint16_t nVendorID, nProductID;
    std::uint8_t byPrimaryUsage; ///< of the first collection
    LightModel model;
    std::uint8_t bySecondUsage = 0; ///< of a second collection; 0 for none
};

inline constexpr LightKind kLightKinds[] = {
    {0x0E53, 0x2516, 1, LightModel::V30},    {0x0E53, 0x2517, 1, LightModel::V30},
    {0x0E53, 0x2519, 1, LightModel::V30},    {0x2C0D, 0x0003, 1, LightModel::V30},
    {0x2C0D, 0x0006, 1, LightModel::V30},    {0x1130, 0x0001, 3, LightModel::Framed},
    {0x1130, 0x0002, 3, LightModel::Framed}, {0x1130, 0x1E00, 1, LightModel::Plain},
};
inline constexpr LightKind kV30Light = kLightKinds[3];
inline constexpr LightKind kFramedLight = kLightKinds[5];
inline constexpr LightKind kPlainLight = kLightKinds[7];

/// A vendor-defined report descriptor with 8 bytes in, and 8 or 64 bytes out (Device Class Definition for
/// HID 1.11, section 6.2.2).
Bytes reportDescriptor(const LightKind& kind);

} // namespace vellux::simulator
