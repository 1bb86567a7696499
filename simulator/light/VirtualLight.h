// One virtual light: a HID device that decodes what it is sent, prints it, and shows it.
#pragma once

#include "light/ReportDecoder.h"
#include "platform/Changes.h"
#include "platform/Console.h"
#include "ports/HidManager.h"
#include "threads/Mutex.h"

#include <cstdint>
#include <map>
#include <span>
#include <string>

namespace vellux::simulator {

/// What a light has shown so far.
struct LightRecord {
    LightState state;
    std::string strLastColour; ///< the colour shown last, also when it is off now; "" before the first
    int nDarkenings = 0;       ///< how often it went from lit to off
    int nFaults = 0;           ///< reports that it could not decode
};

/// Any thread. Prints `report HEX` for each report, `light STATE` when it then shows something else, and
/// `light fault TEXT` for a report that it can't decode.
class VirtualLight : public HidDevice {
public:
    /// `console` and `changes` must outlive the light.
    VirtualLight(LightModel model, Console& console, Changes& changes);

    /// "VendorID", "ProductID" and "PrimaryUsage" of a light of this model.
    const std::map<std::string, std::int32_t, std::less<>>& properties() const { return m_properties; }

    LightRecord record() const;

    /// Takes one report. ENODEV when the light is not plugged, EACCES when the user may not open it, else 0,
    /// even for a report that can't be decoded.
    HidResult take(std::uint8_t byReportID, std::span<const std::uint8_t> payload);

    /// Whether the user may open the light, which then takes reports. To be set before it is plugged.
    void setPermitted(bool bPermitted);
    /// 0, or EACCES for a light that may not be opened.
    HidResult refusal() const;

    /// Power comes and goes with the plug; without it the light is dark, and with it, it is dark at first.
    void setPlugged(bool bPlugged);

private:
    void show(const LightState& state) VELLUX_REQUIRES(m_mutex);

    const LightModel m_model;
    const std::map<std::string, std::int32_t, std::less<>> m_properties;
    Console& m_console;
    Changes& m_changes;
    mutable Mutex m_mutex; // held while printing, so that lines have the order of the reports
    LightRecord m_record VELLUX_GUARDED_BY(m_mutex);
    bool m_bPlugged VELLUX_GUARDED_BY(m_mutex) = false;
    bool m_bPermitted VELLUX_GUARDED_BY(m_mutex) = true;
};

} // namespace vellux::simulator
