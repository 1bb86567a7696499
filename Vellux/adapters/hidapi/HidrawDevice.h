// One device of the manager's set, and the custody of the library's handles.
#pragma once

#include "adapters/hidapi/HidrawCatalogue.h"
#include "adapters/hidapi/WakeUp.h"
#include "threads/Mutex.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct hid_device_; // hidapi's, opaque

namespace vellux {

/// Opens and closes hidapi's handles. What is global in hidapi is not thread-safe, so while a device watch
/// runs only its thread opens and closes; a reference dropped elsewhere hands its handle to that thread. With
/// no watch running the last owner closes, under the lock. One process has one of these.
class HidrawHandles {
public:
    /// The watch's thread: starts the library. `wake` is signalled for each handle that waits to be closed.
    /// False when the library can't be used.
    bool begin(std::shared_ptr<WakeUp> wake);
    /// The watch's thread: closes what waits and ends the library.
    void end();
    /// The watch's thread: closes the handles that nobody uses any more.
    void closeReleased();

    /// The watch's thread: opens a device. Null: refused, and `nRefusal` is the platform's code, never 0. Blocks
    /// while the kernel powers the device up.
    hid_device_* open(const std::string& strPath, HidResult& nRefusal);
    /// Gives a handle back, for good. Any thread.
    void release(hid_device_* pHandle);

    /// From now on a device whose last send timed out gets no other, so that nobody waits for it. Any thread.
    void beginShutdown() { m_bShuttingDown = true; }
    bool isHurrying() const { return m_bShuttingDown; }

private:
    Mutex m_mutex;
    std::shared_ptr<WakeUp> m_wake VELLUX_GUARDED_BY(m_mutex); // null while no watch runs
    std::vector<hid_device_*> m_released VELLUX_GUARDED_BY(m_mutex);
    std::atomic<bool> m_bShuttingDown{false};
};

/// A device with the handle it was opened with, which stays valid for as long as the reference does.
class HidrawDevice : public HidDevice {
public:
    /// Owns `pHandle`; null for a device that could not be opened, whose sends all answer `nRefusal`.
    HidrawDevice(HidrawEntry entry, std::shared_ptr<HidrawHandles> handles, hid_device_* pHandle,
                 HidResult nRefusal);
    ~HidrawDevice() override;

    const HidrawEntry& entry() const { return m_entry; }
    /// 0 when the device is open, else the platform's code.
    HidResult refusal() const { return m_pHandle != nullptr ? 0 : m_nRefusal; }

    /// As HidManager::deviceSetReport. Any thread; waits for another thread's send to the same device first.
    HidResult send(HidReportType type, std::uint8_t byReportID, std::span<const std::uint8_t> payload);

private:
    bool isLeftAlone() const VELLUX_REQUIRES(m_sending);

    const HidrawEntry m_entry;
    const std::shared_ptr<HidrawHandles> m_handles;
    const HidResult m_nRefusal;
    Mutex m_sending;
    int m_nTimeouts VELLUX_GUARDED_BY(m_sending) = 0; // in a row, up to the last send
    std::chrono::steady_clock::time_point m_lastSend VELLUX_GUARDED_BY(m_sending); // when it came back
    hid_device_* const m_pHandle;                                                  // sends under m_sending
};

} // namespace vellux
