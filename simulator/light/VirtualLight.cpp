#include "light/VirtualLight.h"

#include "Hex.h"

#include <cerrno>

namespace vellux::simulator {

namespace {

using Properties = std::map<std::string, std::int32_t, std::less<>>;

// One product of each family.
Properties propertiesOf(LightModel model) {
    switch (model) {
    case LightModel::Framed:
        return {{"VendorID", 0x1130}, {"ProductID", 0x0001}, {"PrimaryUsage", 3}};
    case LightModel::Plain:
        return {{"VendorID", 0x1130}, {"ProductID", 0x1E00}, {"PrimaryUsage", 1}};
    case LightModel::V30:
        return {{"VendorID", 0x0E53}, {"ProductID", 0x2516}, {"PrimaryUsage", 1}};
    }
    return {};
}

} // namespace

VirtualLight::VirtualLight(LightModel model, Console& console, Changes& changes)
    : m_model(model), m_properties(propertiesOf(model)), m_console(console), m_changes(changes) {}

LightRecord VirtualLight::record() const {
    ScopedLock lock(m_mutex);
    return m_record;
}

HidResult VirtualLight::take(std::uint8_t byReportID, std::span<const std::uint8_t> payload) {
    {
        ScopedLock lock(m_mutex);
        if (!m_bPlugged)
            return ENODEV;
        if (!m_bPermitted)
            return EACCES;
        m_console.print("report " + hexOf(payload));
        DecodedReport decoded = decodeReport(m_model, payload);
        if (byReportID != 0)
            decoded = {std::nullopt, "not a report with ID 0"};
        if (decoded.state) {
            show(*decoded.state);
        } else {
            ++m_record.nFaults;
            m_console.print("light fault " + decoded.strFault);
        }
    }
    m_changes.notify();
    return 0;
}

void VirtualLight::show(const LightState& state) {
    if (state == m_record.state)
        return;
    if (!state.isLit())
        ++m_record.nDarkenings;
    else
        m_record.strLastColour = state.strColour;
    m_record.state = state;
    m_console.print("light " + state.text());
}

void VirtualLight::setPermitted(bool bPermitted) {
    ScopedLock lock(m_mutex);
    m_bPermitted = bPermitted;
}

HidResult VirtualLight::refusal() const {
    ScopedLock lock(m_mutex);
    return m_bPermitted ? 0 : EACCES;
}

void VirtualLight::setPlugged(bool bPlugged) {
    {
        ScopedLock lock(m_mutex);
        m_bPlugged = bPlugged;
        show({});
    }
    m_changes.notify();
}

} // namespace vellux::simulator
