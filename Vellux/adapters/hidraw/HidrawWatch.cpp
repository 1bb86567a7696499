#include "adapters/hidraw/HidrawWatch.h"

#include "adapters/hidraw/HidrawDevice.h"

#include <cerrno>
#include <pthread.h>
#include <system_error>
#include <utility>

namespace vellux {

namespace {

using namespace std::chrono_literals;

// A plug causes several events, and a bad contact very many: the devices are listed once events have paused
// for the settling time, or after this many rounds.
constexpr auto kSettlingTime = 50ms;
constexpr int kMostSettlingRounds = 10;
// After this time the system is asked again when it could not tell which devices there are.
constexpr auto kListAgainAfter = 1000ms;

} // namespace

HidrawWatch::HidrawWatch(HidrawSystem system, std::vector<HidMatching> matching,
                         std::shared_ptr<const std::atomic<bool>> shuttingDown, Report report)
    : m_system(std::move(system)), m_matching(std::move(matching)), m_shuttingDown(std::move(shuttingDown)),
      m_report(std::move(report)) {}

HidrawWatch::~HidrawWatch() {
    stop();
}

HidResult HidrawWatch::start() {
    if (m_wake.descriptor() < 0)
        return EMFILE;
    std::promise<void> listed;
    std::future<void> wasListed = listed.get_future();
    try {
        m_thread = std::thread([this, promise = std::move(listed)]() mutable { run(std::move(promise)); });
    } catch (const std::system_error&) {
        return EAGAIN;
    }
    wasListed.get();
    return 0;
}

void HidrawWatch::stop() {
    if (!m_thread.joinable())
        return;
    m_bStop = true;
    m_wake.signal();
    m_thread.join();
}

void HidrawWatch::redeliver() {
    m_bRedeliver = true;
    m_wake.signal();
}

void HidrawWatch::run(std::promise<void> listed) {
    ::pthread_setname_np(::pthread_self(), "device-watch");
    m_hotplug = std::make_unique<HotplugSource>(); // before the listing, so that no event is missed
    refresh(false);
    listed.set_value();

    while (!m_bStop) {
        const bool bChanged =
            m_hotplug->wait(m_wake, m_bListed ? std::nullopt : std::optional(kListAgainAfter));
        if (bChanged)
            settle();
        m_wake.clear(); // before the requests are read, so that no later one is missed
        const bool bRedeliver = m_bRedeliver.exchange(false);
        if (!m_bStop && (bChanged || bRedeliver || !m_bListed))
            refresh(bRedeliver);
    }

    m_devices.set({});
    m_catalogue = {};
    m_hotplug.reset();
}

void HidrawWatch::settle() {
    int nRounds = 0;
    while (m_hotplug->wait(m_wake, kSettlingTime) && ++nRounds < kMostSettlingRounds) {
    }
}

void HidrawWatch::refresh(bool bRedeliver) {
    const auto listed = m_system.list();
    m_bListed = listed.has_value();
    if (!m_bListed) { // the last list stays valid
        m_bRedeliver = m_bRedeliver || bRedeliver;
        return;
    }
    m_hotplug->forgetRefused();
    const std::vector<HidrawEntry> present = matchingDevices(*listed, m_matching);
    const HidrawChanges changes = m_catalogue.update(
        present, [this](const HidrawEntry& entry) { return open(entry); }, bRedeliver);
    m_devices.set(m_catalogue.devices());
    m_report(changes);
}

HidrawOpened HidrawWatch::open(const HidrawEntry& entry) {
    HidrawNode node = m_system.open(entry.strPath);
    if (node.nDescriptor < 0) {
        // Tried again after the watch is set, in case permission was granted meanwhile.
        m_hotplug->watchRefused(entry.strPath);
        node = m_system.open(entry.strPath);
    }
    return {std::make_shared<HidrawDevice>(entry, node, m_shuttingDown), node.nDescriptor >= 0};
}

} // namespace vellux
