// Lights in memory, behind the HID port.
#pragma once

#include "Hex.h"
#include "fakes/Journal.h"
#include "ports/HidManager.h"
#include "threads/MainThread.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <map>
#include <memory>
#include <optional>

/// A device of a given identity. Without a property map entry it lacks that property.
struct FakeHidDevice : vellux::HidDevice {
    std::map<std::string, std::int64_t, std::less<>> properties;
    vellux::HidResult nOpenResult = 0;
    std::string strName;             // put before its reports when the test has several lights
    std::atomic<bool> bGone = false; // sends fail
};

/// Journals "report HEX" ("report NAME HEX" for a named light; 64-byte reports whose tail is all zero end in
/// "..00") and the manager's life as "hid ..." lines.
class FakeHidManager : public vellux::HidManager {
public:
    FakeHidManager(Journal& journal, vellux::MainThread& mainThread)
        : m_journal(journal), m_mainThread(mainThread) {}

    // ---- what tests do ----

    static std::shared_ptr<FakeHidDevice> light(std::int64_t nVendor, std::int64_t nProduct,
                                                std::string strName = {}) {
        auto device = std::make_shared<FakeHidDevice>();
        const std::int64_t nUsage = nVendor == 0x1130 && nProduct < 0x1E00 ? 3 : 1;
        device->properties = {{"VendorID", nVendor}, {"ProductID", nProduct}, {"PrimaryUsage", nUsage}};
        device->strName = std::move(strName);
        return device;
    }

    /// Puts a device into the set without any notice: as before start-up.
    void present(const vellux::HidDeviceRef& device) {
        fake(device).bGone = false;
        m_devices.push_back(device);
    }
    /// A device arrives: its notice is queued to main.
    void simulateArrival(const vellux::HidDeviceRef& device) {
        present(device);
        noticeArrival(device);
    }
    void simulateRemoval(const vellux::HidDeviceRef& device) {
        fake(device).bGone = true;
        std::erase(m_devices, device);
        notice(&FakeHidManager::m_removal, device);
    }
    /// A late notice of a device that is, or is no longer, in the set.
    void noticeArrival(const vellux::HidDeviceRef& device) { notice(&FakeHidManager::m_arrival, device); }

    bool bCreateFails = false;
    bool bOpenFails = false;
    bool bNoSet = false; // copyDevices gives nothing at all
    /// Whether the set is that of the matching devices, as with real managers, or of all.
    bool bMatches = true;

    /// The result of each report, asked for on the sending thread. Without it all succeed.
    std::function<vellux::HidResult()> onReport;
    const std::vector<vellux::HidMatching>& matching() const { return m_matching; }

    // ---- the port ----

    bool create() override {
        m_journal.add("hid create");
        return !bCreateFails;
    }
    void setDeviceMatchingMultiple(const std::vector<vellux::HidMatching>& matching) override {
        m_journal.add("hid matching");
        m_matching = matching;
    }
    void registerDeviceMatchingCallback(std::function<void(const vellux::HidDeviceRef&)> callback) override {
        m_journal.add(callback ? "hid register arrival" : "hid unregister arrival");
        m_arrival = std::move(callback);
    }
    void registerDeviceRemovalCallback(std::function<void(const vellux::HidDeviceRef&)> callback) override {
        m_journal.add(callback ? "hid register removal" : "hid unregister removal");
        m_removal = std::move(callback);
    }
    void setScheduled(bool bScheduled) override {
        m_journal.add(bScheduled ? "hid schedule" : "hid unschedule");
        m_bScheduled = bScheduled;
    }
    vellux::HidResult open() override {
        m_journal.add("hid open");
        m_bFollowing = true; // also when it fails: such a manager lists devices, but can't use them
        if (bOpenFails)
            return 0xE00002C5;
        for (const auto& device : m_devices)
            noticeArrival(device);
        return 0;
    }
    void close() override {
        m_journal.add("hid close");
        m_bFollowing = false;
        ++m_nSession;
    }
    std::optional<vellux::HidDeviceList> copyDevices() override {
        if (bNoSet || !m_bFollowing)
            return std::nullopt;
        vellux::HidDeviceList devices;
        std::copy_if(m_devices.begin(), m_devices.end(), std::back_inserter(devices),
                     [this](const auto& device) { return matches(device); });
        return devices;
    }
    std::optional<std::int64_t> deviceGetProperty(const vellux::HidDeviceRef& device,
                                                  std::string_view strKey) override {
        const auto found = fake(device).properties.find(strKey);
        return found == fake(device).properties.end() ? std::nullopt : std::optional(found->second);
    }
    vellux::HidResult deviceOpenResult(const vellux::HidDeviceRef& device) override {
        return fake(device).nOpenResult;
    }
    bool isPermissionRefusal(vellux::HidResult result) override { return result == 13; }
    void beginShutdown() override { m_journal.add("hid shutdown"); }
    vellux::HidResult deviceSetReport(const vellux::HidDeviceRef& device, std::uint8_t byReportID,
                                      std::span<const std::uint8_t> payload) override {
        using vellux::simulator::hexOf;
        if (fake(device).bGone || fake(device).nOpenResult != 0)
            return fake(device).bGone ? kGone : fake(device).nOpenResult;
        const std::string& strName = fake(device).strName;
        std::string strHex = hexOf(payload);
        if (payload.size() == 64 &&
            std::all_of(payload.begin() + 1, payload.end(), [](auto by) { return by == 0; }))
            strHex = hexOf(payload.first(1)) + "..00";
        const bool bPlain = byReportID == 0;
        m_journal.add("report " + (strName.empty() ? "" : strName + " ") + strHex +
                      (bPlain ? "" : " not an output report with ID 0"));
        return onReport ? onReport() : 0;
    }

private:
    using Notice = std::function<void(const vellux::HidDeviceRef&)>;
    static constexpr vellux::HidResult kGone = 0xE00002C0;

    static FakeHidDevice& fake(const vellux::HidDeviceRef& device) {
        return static_cast<FakeHidDevice&>(*device);
    }
    bool matches(const vellux::HidDeviceRef& device) {
        return !bMatches || std::any_of(m_matching.begin(), m_matching.end(), [&](const auto& entry) {
            return std::all_of(entry.begin(), entry.end(), [&](const auto& wanted) {
                return deviceGetProperty(device, wanted.first) == wanted.second;
            });
        });
    }
    // To be delivered later, unless the manager has been closed by then.
    void notice(Notice FakeHidManager::*pWhich, const vellux::HidDeviceRef& device) {
        if (!m_bFollowing || !matches(device))
            return;
        m_mainThread.post([this, pWhich, device, nSession = m_nSession] {
            const Notice callback = this->*pWhich; // a copy: it may unregister itself
            if (m_bFollowing && nSession == m_nSession && m_bScheduled && callback)
                callback(device);
        });
    }

    Journal& m_journal;
    vellux::MainThread& m_mainThread;
    std::vector<vellux::HidMatching> m_matching;
    Notice m_arrival;
    Notice m_removal;
    bool m_bScheduled = false;
    bool m_bFollowing = false;
    int m_nSession = 0;              // counts every close()
    vellux::HidDeviceList m_devices; // all, of the set or not
};
