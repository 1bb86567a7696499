// What the positions of the two flash-speed lists select.
#pragma once

#include <cstdint>
#include <iterator>

namespace vellux {

struct FlashSpeed {
    const char* strName; // as the lists show it
    float flHalfPeriod;  // seconds, for a worker that flashes; kept-on-purpose:single-precision-periods
    std::uint8_t byHardwareSpeed; // for SelectLightFlashSpeed: V30 lights flash by themselves
};

inline constexpr FlashSpeed kFlashSpeeds[] = {{"Slow", 0.75F, 0}, {"Medium", 0.35F, 1}, {"Fast", 0.1F, 2}};

/// Position of the manual list that means a steady light; the speeds come after it.
inline constexpr std::int64_t kSteadyPosition = 0;
inline constexpr const char* kSteadyName = "Steady";

/// The speed at a position of the sync list; null when there is none.
inline const FlashSpeed* syncFlashSpeed(std::int64_t nPosition) {
    const bool bThere = nPosition >= 0 && nPosition < static_cast<std::int64_t>(std::size(kFlashSpeeds));
    return bThere ? &kFlashSpeeds[nPosition] : nullptr;
}

/// The speed at a position of the manual list; null for the steady position and where there is none.
inline const FlashSpeed* manualFlashSpeed(std::int64_t nPosition) {
    return nPosition == kSteadyPosition ? nullptr : syncFlashSpeed(nPosition - 1);
}

} // namespace vellux
