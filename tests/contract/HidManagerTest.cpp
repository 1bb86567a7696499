// What the HID port promises, of each of its managers: the kernel's nodes, the simulator's lights, and the
// tests' own.

#include "adapters/hidraw/HidrawManager.h"
#include "fakes/CountingQueue.h"
#include "fakes/FakeHidManager.h"
#include "kernel/SocketNodes.h"
#include "kernel/UdevEvents.h"
#include "light/VirtualLights.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <climits>
#include <csignal>

using namespace vellux;

namespace {

using Names = std::vector<std::string>;
using simulator::LightModel;

struct Kind {
    const char* strName;
    LightModel model;
    std::uint16_t nVendor, nProduct, nUsage;
};
constexpr Kind kFramed{"framed", LightModel::Framed, 0x1130, 0x0001, 3};
constexpr Kind kPlain{"plain", LightModel::Plain, 0x1130, 0x1E00, 1};
constexpr Kind kV30{"v30", LightModel::V30, 0x0E53, 0x2516, 1};

/// A manager, and one light of each kind for it.
class Lights {
public:
    virtual ~Lights() = default;
    virtual HidManager& manager() = 0;
    virtual void plug(const Kind& kind, bool bPermitted) = 0;
    virtual void unplug(const Kind& kind) = 0;
    /// The reports as the light has seen them since the last call, in hexadecimal.
    virtual Names reports(const Kind& kind) = 0;
};

class HidrawLights : public Lights {
public:
    explicit HidrawLights(MainThread& mainThread) : m_manager(mainThread, m_nodes.system()) {
        std::signal(SIGPIPE, SIG_IGN); // as the program does
    }
    HidManager& manager() override { return m_manager; }
    void plug(const Kind& kind, bool bPermitted) override {
        m_nodes.refuse(kind.strName, bPermitted ? 0 : INT_MAX);
        m_nodes.listing.update([&](auto& listing) {
            listing->push_back({kind.strName, "", kind.nVendor, kind.nProduct, kind.nUsage});
        });
        udev_events::announce();
    }
    void unplug(const Kind& kind) override {
        if (const auto light = m_nodes.light(kind.strName))
            light->unplug();
        m_nodes.listing.update([&](auto& listing) {
            std::erase_if(*listing, [&](const auto& entry) { return entry.strPath == kind.strName; });
        });
        udev_events::announce();
    }
    Names reports(const Kind& kind) override {
        Names names;
        for (const auto& report : m_nodes.light(kind.strName)->reports()) {
            EXPECT_EQ(report.at(0), 0); // the ID, which the kernel keeps to itself
            names.push_back(simulator::hexOf(std::span(report).subspan(1)));
        }
        return names;
    }

private:
    SocketNodes m_nodes;
    HidrawManager m_manager;
};

class SimulatedLights : public Lights {
public:
    explicit SimulatedLights(MainThread& mainThread) : m_manager(mainThread) {}
    HidManager& manager() override { return m_manager; }
    void plug(const Kind& kind, bool bPermitted) override {
        auto& pLight = m_lights[kind.strName];
        if (pLight == nullptr)
            pLight = std::make_unique<Light>(kind.model);
        pLight->light->setPermitted(bPermitted);
        m_manager.plug(pLight->light);
    }
    void unplug(const Kind& kind) override { m_manager.unplug(m_lights[kind.strName]->light); }
    Names reports(const Kind& kind) override { return m_lights[kind.strName]->reports(); }

private:
    // Prints for itself.
    struct Light {
        explicit Light(LightModel model)
            : light(std::make_shared<simulator::VirtualLight>(model, console, changes)) {}
        ~Light() {
            std::fclose(pFile);
            std::free(pText);
        }
        Names reports() {
            Names names;
            for (const std::string& strLine : split(std::string(pText + nSeen, nText - nSeen), "\n"))
                if (strLine.starts_with("report "))
                    names.push_back(strLine.substr(7));
            nSeen = nText;
            return names;
        }

        char* pText = nullptr;
        std::size_t nText = 0, nSeen = 0;
        std::FILE* const pFile = ::open_memstream(&pText, &nText);
        simulator::Console console{pFile};
        simulator::Changes changes;
        const simulator::VirtualLightRef light;
    };

    std::map<std::string, std::unique_ptr<Light>> m_lights;
    simulator::VirtualLights m_manager;
};

class FakeLights : public Lights {
public:
    explicit FakeLights(MainThread& mainThread) : m_manager(m_journal, mainThread) {}
    HidManager& manager() override { return m_manager; }
    void plug(const Kind& kind, bool bPermitted) override {
        auto& light = m_lights[kind.strName];
        light = FakeHidManager::light(kind.nVendor, kind.nProduct, kind.strName);
        light->nOpenResult = bPermitted ? 0 : 13;
        m_manager.simulateArrival(light);
    }
    void unplug(const Kind& kind) override { m_manager.simulateRemoval(m_lights[kind.strName]); }
    Names reports(const Kind& kind) override {
        const std::string strHead = std::string("report ") + kind.strName;
        Names names;
        for (const std::string& strLine : m_journal.take({strHead}))
            names.push_back(strLine.substr(strHead.size() + 1));
        return names;
    }

private:
    Journal m_journal;
    FakeHidManager m_manager;
    std::map<std::string, std::shared_ptr<FakeHidDevice>> m_lights;
};

std::unique_ptr<Lights> makeLights(const std::string& strManager, MainThread& mainThread) {
    if (strManager == "Hidraw")
        return std::make_unique<HidrawLights>(mainThread);
    if (strManager == "Virtual")
        return std::make_unique<SimulatedLights>(mainThread);
    return std::make_unique<FakeLights>(mainThread);
}

class HidManagerFixture : public testing::TestWithParam<std::string> {
protected:
    ~HidManagerFixture() override { manager().close(); }

    HidManager& manager() VELLUX_ASSERT_CAPABILITY(mainThreadRole) {
        assertMainThread(m_mainThread);
        return m_lights->manager();
    }
    /// Sets the manager up, except for its opening.
    void create(const std::vector<HidMatching>& matching = {{{"VendorID", 0x1130}}, {{"VendorID", 0x0E53}}}) {
        ASSERT_TRUE(manager().create());
        manager().setDeviceMatchingMultiple(matching);
        listen();
        manager().setScheduled(true);
    }
    void listen(bool bArrivals = true, bool bRemovals = true) {
        std::function<void(const HidDeviceRef&)> arrived, removed;
        if (bArrivals)
            arrived = [this](const auto& device) { note("+", device); };
        if (bRemovals)
            removed = [this](const auto& device) { note("-", device); };
        manager().registerDeviceMatchingCallback(arrived);
        manager().registerDeviceRemovalCallback(removed);
    }
    void plug(const Kind& kind, bool bPermitted = true) { m_lights->plug(kind, bPermitted); }
    void unplug(const Kind& kind) { m_lights->unplug(kind); }
    Names reports(const Kind& kind) { return m_lights->reports(kind); }

    /// The notices that have been delivered since the last call, as soon as the manager has queued so many.
    Names notices(int nQueued) {
        EXPECT_EQ(m_notices, Names{}) << "from within an operation";
        m_mainThread.waitUntilPosted(nQueued);
        while (m_mainThread.runPending()) {
        }
        return std::exchange(m_notices, {});
    }
    std::map<std::string, HidDeviceRef> present() {
        std::map<std::string, HidDeviceRef> present;
        for (const HidDeviceRef& device : manager().copyDevices().value_or(HidDeviceList()))
            EXPECT_TRUE(present.emplace(name(device), device).second);
        return present;
    }
    Names names() {
        Names names;
        for (const auto& [strName, device] : present())
            names.push_back(strName);
        return names;
    }
    HidResult send(const HidDeviceRef& device, const std::vector<std::uint8_t>& payload) {
        return manager().deviceSetReport(device, 0, payload);
    }
    std::string name(const HidDeviceRef& device) {
        for (const Kind& kind : {kFramed, kPlain, kV30})
            if (manager().deviceGetProperty(device, "ProductID") == kind.nProduct)
                return kind.strName;
        return "unknown";
    }

private:
    void note(const std::string& strWhat, const HidDeviceRef& device) {
        m_notices.push_back(strWhat + name(device));
        HidDeviceRef& arrived = m_arrived[name(device)];
        EXPECT_TRUE(strWhat == "+" || arrived == nullptr || arrived == device);
        arrived = strWhat == "+" ? device : nullptr;
    }

    CountingQueue m_mainThread;
    const std::unique_ptr<Lights> m_lights = makeLights(GetParam(), m_mainThread);
    Names m_notices;
    std::map<std::string, HidDeviceRef> m_arrived;
};

INSTANTIATE_TEST_SUITE_P(Managers, HidManagerFixture, testing::Values("Hidraw", "Virtual", "Fake"),
                         [](const auto& test) { return test.param; });

// One key taken for all of an entry, one entry for all of them, a key that a device lacks for one that
// matches; no entry for any device.
TEST_P(HidManagerFixture, DevicesAreThoseOfMatchingEntries) {
    create({{{"VendorID", 0x1130}, {"PrimaryUsage", 3}},
            {{"VendorID", 0x0E53}, {"ProductID", 0x1E00}},
            {{"ProductID", 0x1E00}, {"Absent", 0}},
            {{"ProductID", 0x2516}}});
    plug(kPlain);
    plug(kFramed);
    ASSERT_EQ(manager().open(), 0U);
    EXPECT_EQ(names(), Names{"framed"});
    plug(kV30);
    EXPECT_EQ(notices(2), (Names{"+framed", "+v30"}));
    unplug(kPlain);
    unplug(kFramed);
    EXPECT_EQ(notices(1), Names{"-framed"});
    manager().close();
    create({});
    ASSERT_EQ(manager().open(), 0U);
    EXPECT_EQ(names(), Names{});
}

// A light that is there from the start and never noticed, or from within open(), or not listed before its
// notice; notices in another order, or twice; a removal of something else than what arrived.
TEST_P(HidManagerFixture, NoticesAreQueuedInOrder) {
    create();
    EXPECT_EQ(names(), Names{});
    plug(kPlain);
    plug(kV30);
    ASSERT_EQ(manager().open(), 0U);
    EXPECT_EQ(names(), (Names{"plain", "v30"}));
    EXPECT_EQ(notices(2), (Names{"+plain", "+v30"}));
    plug(kFramed);
    EXPECT_EQ(notices(1), Names{"+framed"});
    unplug(kPlain);
    EXPECT_EQ(notices(1), Names{"-plain"});
    EXPECT_EQ(names(), (Names{"framed", "v30"}));
    unplug(kV30);
    plug(kPlain);
    EXPECT_EQ(notices(2), (Names{"-v30", "+plain"}));
    EXPECT_EQ(names(), (Names{"framed", "plain"}));
}

// A property of another device, under another name or made up, or one that goes with its device; a result or
// a refusal of another device; any failure taken for want of permission.
TEST_P(HidManagerFixture, DevicesTellWhatTheyAreAndWhetherTheyAreOpen) {
    create();
    plug(kFramed, false);
    plug(kV30);
    ASSERT_EQ(manager().open(), 0U);
    EXPECT_EQ(notices(2), (Names{"+framed", "+v30"}));
    const auto devices = present();
    const auto expectProperties = [&](const Kind& kind) {
        const HidDeviceRef device = devices.at(kind.strName);
        EXPECT_EQ(device->typeID(), HidDevice::kTypeID);
        EXPECT_EQ(manager().deviceGetProperty(device, "VendorID"), kind.nVendor);
        EXPECT_EQ(manager().deviceGetProperty(device, "ProductID"), kind.nProduct);
        EXPECT_EQ(manager().deviceGetProperty(device, "PrimaryUsage"), kind.nUsage);
        EXPECT_EQ(manager().deviceGetProperty(device, "Absent"), std::nullopt);
    };
    expectProperties(kFramed);
    expectProperties(kV30);
    const HidResult refusal = manager().deviceOpenResult(devices.at("framed"));
    EXPECT_TRUE(refusal != 0 && manager().isPermissionRefusal(refusal));
    EXPECT_EQ(send(devices.at("framed"), {1}), refusal);
    EXPECT_EQ(manager().deviceOpenResult(devices.at("v30")), 0U);
    EXPECT_FALSE(manager().isPermissionRefusal(0));
    unplug(kV30);
    EXPECT_EQ(notices(1), Names{"-v30"});
    expectProperties(kV30);
    EXPECT_FALSE(manager().isPermissionRefusal(send(devices.at("v30"), {1})));
}

// A report to another light, with its ID in it, cut, or twice; one that a light which has gone is said to
// have taken, or that fails because another light has gone.
TEST_P(HidManagerFixture, ReportsReachTheirLight) {
    create();
    plug(kFramed);
    plug(kV30);
    ASSERT_EQ(manager().open(), 0U);
    const auto devices = present();
    const std::vector<std::uint8_t> payload = {0, 0x55, 0x53, 0, 1, 2, 3, 0};
    EXPECT_EQ(send(devices.at("framed"), payload), 0U);
    EXPECT_EQ(send(devices.at("v30"), {0xFF, 7}), 0U);
    EXPECT_EQ(reports(kFramed), Names{"0055530001020300"});
    EXPECT_EQ(reports(kV30), Names{"ff07"});
    unplug(kFramed);
    EXPECT_EQ(notices(3), (Names{"+framed", "+v30", "-framed"}));
    EXPECT_NE(send(devices.at("framed"), payload), 0U);
    EXPECT_EQ(send(devices.at("v30"), payload), 0U);
    EXPECT_EQ(reports(kV30), Names{"0055530001020300"});
    plug(kFramed);
    EXPECT_EQ(notices(1), Names{"+framed"});
    EXPECT_EQ(send(present().at("framed"), payload), 0U);
    EXPECT_EQ(reports(kFramed), Names{"0055530001020300"});
}

// Notices for nobody, or kept for later; a callback that is destroyed while it runs.
TEST_P(HidManagerFixture, NoticesAreForThoseWhoListen) {
    create();
    ASSERT_EQ(manager().open(), 0U);
    for (const bool bScheduled : {false, true})
        for (const bool bArrivals : {false, true}) {
            manager().setScheduled(bScheduled);
            listen(bArrivals, !bArrivals);
            plug(kFramed);
            EXPECT_EQ(notices(1), bScheduled && bArrivals ? Names{"+framed"} : Names{});
            unplug(kFramed);
            EXPECT_EQ(notices(1), bScheduled && !bArrivals ? Names{"-framed"} : Names{});
        }
    manager().registerDeviceMatchingCallback([this, owned = std::make_shared<int>()](const HidDeviceRef&) {
        const std::weak_ptr<int> held = owned;
        manager().registerDeviceMatchingCallback({});
        EXPECT_FALSE(held.expired());
    });
    plug(kFramed);
    EXPECT_EQ(notices(1), Names{});
}

// Notices of an earlier session, or of what happened between two; devices that stay listed, or handles that
// close under their holders; a manager that can't be opened again, or only with the devices it had before.
TEST_P(HidManagerFixture, ClosesAndOpensAgain) {
    create();
    plug(kFramed);
    ASSERT_EQ(manager().open(), 0U);
    const HidDeviceRef held = present().at("framed");
    manager().close();
    EXPECT_EQ(names(), Names{});
    EXPECT_EQ(send(held, {1}), 0U);
    EXPECT_EQ(notices(1), Names{});
    plug(kV30);
    ASSERT_EQ(manager().open(), 0U);
    manager().close();
    unplug(kFramed);
    ASSERT_EQ(manager().open(), 0U);
    EXPECT_EQ(notices(3), Names{"+v30"});
    EXPECT_EQ(names(), Names{"v30"});
    plug(kPlain);
    EXPECT_EQ(notices(1), Names{"+plain"});
}

} // namespace
