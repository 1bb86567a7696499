// The HID port over virtual lights that can be plugged and unplugged while the program runs.
#pragma once

#include "light/VirtualLight.h"
#include "ports/HidManager.h"
#include "threads/MainThread.h"
#include "threads/Mutex.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace vellux::simulator {

using VirtualLightRef = std::shared_ptr<VirtualLight>;

/// Notices are queued for the main thread, never delivered from within a call.
class VirtualLights : public HidManager {
public:
    /// `mainThread` must outlive the manager.
    explicit VirtualLights(MainThread& mainThread) : m_mainThread(mainThread) {}

    // Any thread.

    /// Plugs a light in at the end of the list; nothing when it is there already.
    void plug(const VirtualLightRef& light);
    /// Pulls a light out; nothing when it is not there.
    void unplug(const VirtualLightRef& light);
    bool isPlugged(const VirtualLightRef& light) const;

    bool create() override { return true; }
    void setDeviceMatchingMultiple(const std::vector<HidMatching>& matching) override;
    void registerDeviceMatchingCallback(std::function<void(const HidDeviceRef&)> callback) override;
    void registerDeviceRemovalCallback(std::function<void(const HidDeviceRef&)> callback) override;
    void setScheduled(bool bScheduled) override;
    HidResult open() override;
    void close() override;
    std::optional<HidDeviceList> copyDevices() override;
    std::optional<std::int64_t> deviceGetProperty(const HidDeviceRef& device,
                                                  std::string_view strKey) override;
    HidResult deviceOpenResult(const HidDeviceRef& device) override;
    bool isPermissionRefusal(HidResult result) override;
    void beginShutdown() override {}
    HidResult deviceSetReport(const HidDeviceRef& device, std::uint8_t byReportID,
                              std::span<const std::uint8_t> payload) override;

private:
    using Notice = std::function<void(const HidDeviceRef&)>;

    bool matches(const VirtualLight& light) const VELLUX_REQUIRES(m_mutex);
    void post(const VirtualLightRef& light, Notice VirtualLights::*notice, std::uint64_t nSession);
    void deliver(const VirtualLightRef& light, Notice VirtualLights::*notice, std::uint64_t nSession);

    MainThread& m_mainThread;
    mutable Mutex m_mutex;
    std::vector<VirtualLightRef> m_lights VELLUX_GUARDED_BY(m_mutex);
    std::vector<HidMatching> m_matching VELLUX_GUARDED_BY(m_mutex);
    bool m_bScheduled VELLUX_GUARDED_BY(m_mutex) = false;
    bool m_bOpen VELLUX_GUARDED_BY(m_mutex) = false;
    std::uint64_t m_nSession VELLUX_GUARDED_BY(m_mutex) = 0; // counts every open()
    Notice m_onArrival;                                      // main thread
    Notice m_onRemoval;                                      // main thread
};

} // namespace vellux::simulator
