#include "light/VirtualLights.h"

#include <cerrno>

#include <algorithm>
#include <utility>

namespace vellux::simulator {

void VirtualLights::plug(const VirtualLightRef& light) {
    std::uint64_t nSession = 0;
    {
        ScopedLock lock(m_mutex);
        if (std::find(m_lights.begin(), m_lights.end(), light) != m_lights.end())
            return;
        m_lights.push_back(light);
        nSession = m_bOpen && matches(*light) ? m_nSession : 0;
    }
    light->setPlugged(true);
    if (nSession != 0)
        post(light, &VirtualLights::m_onArrival, nSession);
}

void VirtualLights::unplug(const VirtualLightRef& light) {
    std::uint64_t nSession = 0;
    {
        ScopedLock lock(m_mutex);
        if (std::erase(m_lights, light) == 0)
            return;
        nSession = m_bOpen && matches(*light) ? m_nSession : 0;
    }
    light->setPlugged(false);
    if (nSession != 0)
        post(light, &VirtualLights::m_onRemoval, nSession);
}

bool VirtualLights::isPlugged(const VirtualLightRef& light) const {
    ScopedLock lock(m_mutex);
    return std::find(m_lights.begin(), m_lights.end(), light) != m_lights.end();
}

bool VirtualLights::matches(const VirtualLight& light) const {
    const auto& properties = light.properties();
    return std::any_of(m_matching.begin(), m_matching.end(), [&](const HidMatching& entry) {
        return std::all_of(entry.begin(), entry.end(), [&](const auto& wanted) {
            const auto property = properties.find(wanted.first);
            return property != properties.end() && property->second == wanted.second;
        });
    });
}

void VirtualLights::post(const VirtualLightRef& light, Notice VirtualLights::*notice,
                         std::uint64_t nSession) {
    m_mainThread.post([this, light, notice, nSession] { deliver(light, notice, nSession); });
}

void VirtualLights::deliver(const VirtualLightRef& light, Notice VirtualLights::*notice,
                            std::uint64_t nSession) {
    {
        ScopedLock lock(m_mutex);
        if (!m_bOpen || m_nSession != nSession || !m_bScheduled)
            return;
    }
    if (const Notice callback = this->*notice)
        callback(light);
}

void VirtualLights::setDeviceMatchingMultiple(const std::vector<HidMatching>& matching) {
    ScopedLock lock(m_mutex);
    m_matching = matching;
}

void VirtualLights::registerDeviceMatchingCallback(Notice callback) {
    m_onArrival = std::move(callback);
}

void VirtualLights::registerDeviceRemovalCallback(Notice callback) {
    m_onRemoval = std::move(callback);
}

void VirtualLights::setScheduled(bool bScheduled) {
    ScopedLock lock(m_mutex);
    m_bScheduled = bScheduled;
}

HidResult VirtualLights::open() {
    std::vector<VirtualLightRef> present;
    std::uint64_t nSession = 0;
    {
        ScopedLock lock(m_mutex);
        if (m_bOpen)
            return 0;
        m_bOpen = true;
        nSession = ++m_nSession;
        for (const VirtualLightRef& light : m_lights)
            if (matches(*light))
                present.push_back(light);
    }
    for (const VirtualLightRef& light : present)
        post(light, &VirtualLights::m_onArrival, nSession);
    return 0;
}

void VirtualLights::close() {
    ScopedLock lock(m_mutex);
    m_bOpen = false;
}

std::optional<HidDeviceList> VirtualLights::copyDevices() {
    ScopedLock lock(m_mutex);
    HidDeviceList devices;
    if (m_bOpen)
        for (const VirtualLightRef& light : m_lights)
            if (matches(*light))
                devices.push_back(light);
    return devices;
}

std::optional<std::int64_t> VirtualLights::deviceGetProperty(const HidDeviceRef& device,
                                                             std::string_view strKey) {
    const auto& properties = static_cast<const VirtualLight&>(*device).properties();
    const auto found = properties.find(strKey);
    if (found == properties.end())
        return std::nullopt;
    return found->second;
}

HidResult VirtualLights::deviceOpenResult(const HidDeviceRef& device) {
    return static_cast<VirtualLight&>(*device).refusal();
}

bool VirtualLights::isPermissionRefusal(HidResult result) {
    return result == EACCES;
}

HidResult VirtualLights::deviceSetReport(const HidDeviceRef& device, std::uint8_t byReportID,
                                         std::span<const std::uint8_t> payload) {
    return static_cast<VirtualLight&>(*device).take(byReportID, payload);
}

} // namespace vellux::simulator
