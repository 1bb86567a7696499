// What a window shows beside its controls: values that the modules keep and a view only reads.
#pragma once

#include "model/Colour.h"
#include "model/LightFamily.h"

#include <cstdint>

namespace vellux {

/// What the light shows; without a light, what one would show.
struct LampState {
    /// Colour index. While the light flashes, the colour that it flashes in.
    std::int32_t nColor = kColourOff;
    bool bFlashing = false;

    bool operator==(const LampState&) const = default;
};

/// What a user needs to know about the first light.
struct LightState {
    enum class Access {
        NoLight,      ///< none found
        Usable,       ///< found and open
        NotPermitted, ///< found, but this user may not open it
        NotUsable,    ///< found, but it can't be opened for another reason
    };
    Access access = Access::NoLight;
    LightFamily family = LightFamily::None;
    /// USB identity; 0 without a light.
    std::uint16_t nVendorID = 0;
    std::uint16_t nProductID = 0;

    bool operator==(const LightState&) const = default;
};

/// Whether the presence is being followed.
enum class ChannelState {
    Closed, ///< never opened, or closed by us
    Open,
    Ended, ///< ended without our closing it
};

} // namespace vellux
