// One device of the manager's set: the reports to an open node.
#pragma once

#include "adapters/hidraw/HidrawCatalogue.h"
#include "adapters/hidraw/HidrawListing.h"
#include "threads/Mutex.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace vellux {

/// Spares callers a device that hangs. The kernel waits 5 s for each report; after kTripAfter time-outs in a
/// row the breaker is open, that is, no report goes out, for kCooldown. After that the next report is a
/// trial: one more time-out opens it again, any other result closes it. So a caller that keeps sending waits
/// at most half of the time. Not thread-safe.
class CircuitBreaker {
public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr int kTripAfter = 2;
    static constexpr std::chrono::seconds kCooldown{5}; // as long as the kernel waits

    /// `bShuttingDown`: one time-out is enough, and the breaker stays open.
    bool isOpen(Time now, bool bShuttingDown) const {
        return bShuttingDown ? m_nTimeouts > 0 : m_nTimeouts >= kTripAfter && now - m_lastResult < kCooldown;
    }
    /// Records the result of a report and when it came.
    void record(HidResult result, Time now);

private:
    int m_nTimeouts = 0; // in a row, up to the last result
    Time m_lastResult;
};

/// A device with the descriptor of its node, which stays open for as long as a reference is held. Dropping
/// the last one closes it; the kernel may let that wait for a report that is under way to any device.
class HidrawDevice : public HidDevice {
public:
    using Now = std::function<CircuitBreaker::Time()>;

    /// Owns the descriptor of `node`; sends to a node that was refused all return its code. `shuttingDown` is
    /// read at each send: when set, a device whose last report timed out gets no other.
    HidrawDevice(HidrawEntry entry, HidrawNode node, std::shared_ptr<const std::atomic<bool>> shuttingDown,
                 Now now = std::chrono::steady_clock::now);
    ~HidrawDevice() override;

    const HidrawEntry& entry() const { return m_entry; }
    /// 0 when the device is open, else the errno of the refusal.
    HidResult refusal() const { return m_node.nRefusal; }

    /// As HidrawManager::deviceSetReport. Any thread; waits for another thread's send to the same device
    /// first.
    HidResult send(std::uint8_t byReportID, std::span<const std::uint8_t> payload);

private:
    const HidrawEntry m_entry;
    const HidrawNode m_node; // written to under m_sending
    const std::shared_ptr<const std::atomic<bool>> m_shuttingDown;
    const Now m_now;
    Mutex m_sending;
    CircuitBreaker m_breaker VELLUX_GUARDED_BY(m_sending);
};

} // namespace vellux
