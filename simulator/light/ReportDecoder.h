// What a light makes of a report. Written from the lights' side, with numbers of its own, so that a fault in
// the product's reports shows here and is not shared.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace vellux::simulator {

/// The three families of lights, by the reports that they understand.
enum class LightModel : std::uint8_t {
    Framed, ///< 8 bytes: a frame and a colour code
    Plain,  ///< 64 bytes: a colour code and zeros
    V30,    ///< 8 bytes: levels and control bits
};

/// What a light shows.
struct LightState {
    /// "Red", "Green", "Yellow", "Purple", "Cyan", "Blue", "White", "Orange", "None" (switched off), or
    /// "#rrggbb" for levels that are no colour of these, as they occur for a moment while a colour is changed
    /// level by level.
    std::string strColour = "None";
    /// "slow", "medium" or "fast" of a light that flashes by itself; "unset" when it flashes before it was
    /// told how fast; "" of one that doesn't flash. A light that is off does not flash.
    std::string strFlashing;

    bool isLit() const { return strColour != "None"; }
    /// "Red" or "Red flashing slow".
    std::string text() const;
    bool operator==(const LightState&) const = default;
};

/// A report's meaning: a state, or what is wrong with the report.
struct DecodedReport {
    std::optional<LightState> state;
    std::string strFault; ///< "" when there is a state
};

/// Decodes the payload of an output report. Every report carries the whole state.
DecodedReport decodeReport(LightModel model, std::span<const std::uint8_t> payload);

} // namespace vellux::simulator
