#include "adapters/hidraw/HidrawManager.h"

#include "adapters/hidraw/HidrawDevice.h"
#include "adapters/hidraw/HidrawWatch.h"
#include "ports/Platform.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace vellux {

// Main thread only. Notices that are queued own it, and find here what has become of their manager.
struct HidrawManager::Notices {
    using Callback = std::function<void(const HidDeviceRef&)>;

    Callback arrival;
    Callback removal;
    bool bScheduled = false;
    std::uint64_t nSession = 0; // counts every open() and close()

    /// The call that delivers one notice, unless its session is over by then.
    static std::function<void()> call(std::shared_ptr<Notices> notices, std::uint64_t nSession,
                                      Callback Notices::*pWhich, HidDeviceRef device) {
        return [notices = std::move(notices), nSession, pWhich, device = std::move(device)] {
            if (notices->nSession != nSession || !notices->bScheduled)
                return;
            const Callback callback = (*notices).*pWhich; // a copy: it may unregister itself
            if (callback)
                callback(device);
        };
    }
};

HidrawManager::HidrawManager(MainThread& mainThread, HidrawSystem system)
    : m_mainThread(mainThread), m_notices(std::make_shared<Notices>()), m_system(std::move(system)) {}

HidrawManager::~HidrawManager() {
    HidrawManager::close();
}

bool HidrawManager::create() {
    assertMainThread(m_mainThread);
    close();
    m_matching.clear();
    m_notices->arrival = {};
    m_notices->removal = {};
    m_notices->bScheduled = false;
    return true;
}

void HidrawManager::setDeviceMatchingMultiple(const std::vector<HidMatching>& matching) {
    assertMainThread(m_mainThread);
    m_matching = matching;
}

void HidrawManager::registerDeviceMatchingCallback(std::function<void(const HidDeviceRef&)> callback) {
    assertMainThread(m_mainThread);
    m_notices->arrival = std::move(callback);
}

void HidrawManager::registerDeviceRemovalCallback(std::function<void(const HidDeviceRef&)> callback) {
    assertMainThread(m_mainThread);
    m_notices->removal = std::move(callback);
}

void HidrawManager::setScheduled(bool bScheduled) {
    assertMainThread(m_mainThread);
    m_notices->bScheduled = bScheduled;
}

HidResult HidrawManager::open() {
    assertMainThread(m_mainThread);
    if (m_watch.get() != nullptr)
        return 0;
    const std::uint64_t nSession = ++m_notices->nSession;
    auto report = [notices = m_notices, nSession, &mainThread = m_mainThread](const HidrawChanges& changes) {
        for (const HidDeviceRef& device : changes.removed)
            mainThread.post(Notices::call(notices, nSession, &Notices::removal, device));
        for (const HidDeviceRef& device : changes.arrived)
            mainThread.post(Notices::call(notices, nSession, &Notices::arrival, device));
    };
    auto watch = std::make_shared<HidrawWatch>(m_system, m_matching, m_shuttingDown, std::move(report));
    const HidResult result = watch->start();
    if (result == 0)
        m_watch.set(std::move(watch));
    else
        std::fprintf(stderr, "vellux: lights can't be followed: %s\n",
                     std::generic_category().message(static_cast<int>(result)).c_str());
    return result;
}

void HidrawManager::close() {
    assertMainThread(m_mainThread);
    ++m_notices->nSession;
    const std::shared_ptr<HidrawWatch> watch = m_watch.get();
    if (watch == nullptr)
        return;
    m_watch.set(nullptr);
    watch->stop();
}

std::optional<HidDeviceList> HidrawManager::copyDevices() {
    assertMainThread(m_mainThread);
    const std::shared_ptr<HidrawWatch> watch = m_watch.get();
    if (watch == nullptr)
        return std::nullopt;
    return watch->devices();
}

std::optional<std::int64_t> HidrawManager::deviceGetProperty(const HidDeviceRef& device,
                                                             std::string_view strKey) {
    assertMainThread(m_mainThread);
    const auto* const pDevice = dynamic_cast<const HidrawDevice*>(device.get());
    if (pDevice == nullptr)
        return std::nullopt;
    return hidrawProperty(pDevice->entry(), strKey);
}

HidResult HidrawManager::deviceOpenResult(const HidDeviceRef& device) {
    assertMainThread(m_mainThread);
    const auto* const pDevice = dynamic_cast<const HidrawDevice*>(device.get());
    return pDevice != nullptr ? pDevice->refusal() : ENODEV;
}

std::vector<HidrawLight> HidrawManager::lights() {
    std::vector<HidrawLight> lights;
    for (const HidDeviceRef& device : copyDevices().value_or(HidDeviceList()))
        if (const auto* const pDevice = dynamic_cast<const HidrawDevice*>(device.get()))
            lights.push_back({pDevice->entry().strPath, pDevice->entry().nVendorID,
                              pDevice->entry().nProductID, pDevice->refusal()});
    return lights;
}

bool HidrawManager::isPermissionRefusal(HidResult result) {
    return result == EACCES || result == EPERM;
}

HidResult HidrawManager::deviceSetReport(const HidDeviceRef& device, std::uint8_t byReportID,
                                         std::span<const std::uint8_t> payload) {
    auto* const pDevice = dynamic_cast<HidrawDevice*>(device.get());
    return pDevice != nullptr ? pDevice->send(byReportID, payload) : ENODEV;
}

void HidrawManager::beginShutdown() {
    *m_shuttingDown = true;
}

void HidrawManager::redeliver() {
    if (const std::shared_ptr<HidrawWatch> watch = m_watch.get())
        watch->redeliver();
}

} // namespace vellux
