#include "adapters/hidapi/HidrawDevice.h"

#include <hidapi/hidapi.h>

#include <cerrno>
#include <fcntl.h>
#include <linux/hidraw.h>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace vellux {

namespace {

// The kernel waits 5 s for a device that doesn't answer. One that has let two sends in a row time out is left alone
// for as long as one takes: whoever sends again and again is then held up no more than half of the time.
constexpr int kPatience = 2;
constexpr std::chrono::seconds kRest(5);

/// errno of the call that just failed; EIO when it says nothing.
HidResult lastError() {
    return static_cast<HidResult>(errno != 0 ? errno : EIO);
}

} // namespace

bool HidrawHandles::begin(std::shared_ptr<WakeUp> wake) {
    ScopedLock lock(m_mutex);
    if (hid_init() != 0)
        return false;
    m_wake = std::move(wake);
    return true;
}

void HidrawHandles::end() {
    ScopedLock lock(m_mutex);
    for (hid_device* pHandle : std::exchange(m_released, {}))
        hid_close(pHandle);
    hid_exit();
    m_wake.reset();
}

void HidrawHandles::closeReleased() {
    std::vector<hid_device*> released;
    {
        ScopedLock lock(m_mutex);
        released.swap(m_released);
    }
    for (hid_device* pHandle : released)
        hid_close(pHandle);
}

hid_device* HidrawHandles::open(const std::string& strPath, HidResult& nRefusal) {
    // Opened here first. hidapi 0.13 touches freed memory when a node opens but then does not answer as a
    // hidraw node, which is what a light does that is unplugged while the kernel powers it up. The second
    // opening finds it powered and takes no time. And errno is the kernel's own.
    const int nProbe = ::open(strPath.c_str(), O_RDWR | O_CLOEXEC);
    if (nProbe < 0) {
        nRefusal = lastError();
        return nullptr;
    }
    int nDescriptorSize = 0;
    hid_device* pHandle = nullptr;
    errno = 0;
    if (::ioctl(nProbe, HIDIOCGRDESCSIZE, &nDescriptorSize) >= 0)
        pHandle = hid_open_path(strPath.c_str());
    nRefusal = pHandle == nullptr ? lastError() : 0;
    ::close(nProbe);
    return pHandle;
}

void HidrawHandles::release(hid_device* pHandle) {
    ScopedLock lock(m_mutex);
    if (m_wake == nullptr) {
        hid_close(pHandle);
        return;
    }
    m_released.push_back(pHandle);
    m_wake->signal();
}

HidrawDevice::HidrawDevice(HidrawEntry entry, std::shared_ptr<HidrawHandles> handles, hid_device* pHandle,
                           HidResult nRefusal)
    : m_entry(std::move(entry)), m_handles(std::move(handles)), m_nRefusal(nRefusal), m_pHandle(pHandle) {}

HidrawDevice::~HidrawDevice() {
    if (m_pHandle != nullptr)
        m_handles->release(m_pHandle);
}

HidResult HidrawDevice::send(HidReportType type, std::uint8_t byReportID,
                             std::span<const std::uint8_t> payload) {
    if (m_pHandle == nullptr)
        return m_nRefusal;
    // The kernel takes the report ID as the first byte and keeps a 0 to itself; the count includes it.
    std::vector<std::uint8_t> report;
    report.reserve(payload.size() + 1);
    report.push_back(byReportID);
    report.insert(report.end(), payload.begin(), payload.end());

    ScopedLock lock(m_sending);
    if (isLeftAlone())
        return ETIMEDOUT;
    int nTaken = -1;
    errno = 0;
    switch (type) {
    case HidReportType::Output:
        nTaken = hid_write(m_pHandle, report.data(), report.size());
        break;
    case HidReportType::Feature:
        nTaken = hid_send_feature_report(m_pHandle, report.data(), report.size());
        break;
    case HidReportType::Input:
        errno = EINVAL; // a device sends these
        break;
    }
    HidResult result = 0;
    if (nTaken < 0)
        result = lastError();
    else if (static_cast<std::size_t>(nTaken) != report.size())
        result = EIO;
    m_nTimeouts = result == ETIMEDOUT ? m_nTimeouts + 1 : 0;
    m_lastSend = std::chrono::steady_clock::now();
    return result;
}

bool HidrawDevice::isLeftAlone() const {
    if (m_handles->isHurrying())
        return m_nTimeouts > 0;
    return m_nTimeouts >= kPatience && std::chrono::steady_clock::now() - m_lastSend < kRest;
}

} // namespace vellux
