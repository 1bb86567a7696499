#include "adapters/hidapi/HidrawWatch.h"

#include "adapters/hidapi/HidrawListing.h"

#include <cerrno>
#include <pthread.h>
#include <system_error>
#include <utility>

namespace vellux {

namespace {

using namespace std::chrono_literals;

// A plug gives several events, and a bad contact a shower of them: the list is read when they have been quiet
// for the one time, or after this many of them.
constexpr auto kSettlingTime = 50ms;
constexpr int kMostSettlingRounds = 10;

} // namespace

HidrawWatch::HidrawWatch(std::shared_ptr<HidrawHandles> handles, std::vector<HidMatching> matching,
                         Report report)
    : m_handles(std::move(handles)), m_matching(std::move(matching)), m_report(std::move(report)) {}

HidrawWatch::~HidrawWatch() {
    stop();
}

HidResult HidrawWatch::start() {
    if (m_wake->descriptor() < 0)
        return EMFILE;
    std::promise<HidResult> listed;
    std::future<HidResult> result = listed.get_future();
    try {
        m_thread = std::thread([this, promise = std::move(listed)]() mutable { run(std::move(promise)); });
    } catch (const std::system_error&) {
        return EAGAIN;
    }
    return result.get();
}

void HidrawWatch::stop() {
    if (!m_thread.joinable())
        return;
    m_bStop = true;
    m_wake->signal();
    m_thread.join();
}

void HidrawWatch::redeliver() {
    m_bRedeliver = true;
    m_wake->signal();
}

void HidrawWatch::run(std::promise<HidResult> listed) {
    ::pthread_setname_np(::pthread_self(), "device-watch");
    if (!m_handles->begin(m_wake)) {
        listed.set_value(EIO);
        return;
    }
    m_hotplug = std::make_unique<HotplugSource>(); // before the listing, so that nothing falls in between
    refresh(false);
    listed.set_value(0);

    while (!m_bStop) {
        const bool bChanged = m_hotplug->wait(*m_wake);
        if (bChanged)
            settle();
        m_wake->clear(); // before what was asked for is read, so that nothing asked for later is missed
        m_handles->closeReleased();
        const bool bRedeliver = m_bRedeliver.exchange(false);
        if (!m_bStop && (bChanged || bRedeliver))
            refresh(bRedeliver);
    }

    m_devices.set({});
    m_catalogue = {};
    m_hotplug.reset();
    m_handles->end();
}

void HidrawWatch::settle() {
    int nRounds = 0;
    while (m_hotplug->wait(*m_wake, kSettlingTime) && ++nRounds < kMostSettlingRounds) {
    }
}

void HidrawWatch::refresh(bool bRedeliver) {
    m_hotplug->forgetRefused();
    const std::vector<HidrawEntry> present = matchingDevices(listHidrawDevices(), m_matching);
    const HidrawChanges changes = m_catalogue.update(
        present, [this](const HidrawEntry& entry) { return open(entry); }, bRedeliver);
    m_devices.set(m_catalogue.devices());
    m_report(changes);
}

HidrawOpened HidrawWatch::open(const HidrawEntry& entry) {
    HidResult nRefusal = 0;
    hid_device_* pHandle = m_handles->open(entry.strPath, nRefusal);
    if (pHandle == nullptr) {
        // Tried again after the watch is set, lest the permission came in between.
        m_hotplug->watchRefused(entry.strPath);
        pHandle = m_handles->open(entry.strPath, nRefusal);
    }
    return {std::make_shared<HidrawDevice>(entry, m_handles, pHandle, nRefusal), pHandle != nullptr};
}

} // namespace vellux
