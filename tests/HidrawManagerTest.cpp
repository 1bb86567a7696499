// The manager and its device watch, on nodes that a test lists and opens.

#include "adapters/hidraw/HidrawManager.h"
#include "fakes/CountingQueue.h"
#include "fakes/KernelWrites.h"
#include "kernel/SocketNodes.h"
#include "kernel/UdevEvents.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <sys/resource.h>

using namespace vellux;

namespace {

using Names = std::vector<std::string>;

class HidrawManagerFixture : public testing::Test {
protected:
    HidrawManagerFixture() { std::filesystem::create_directory(m_directory); }
    ~HidrawManagerFixture() override {
        kernel_writes::answer = {};
        m_manager.close();
        std::filesystem::remove_all(m_directory);
    }

    enum class Step { Match, Register, Schedule };
    /// A fresh manager, made as the program does, or with a step left out.
    void create(std::optional<Step> leftOut = std::nullopt) {
        ASSERT_TRUE(m_manager.create());
        if (leftOut != Step::Match)
            m_manager.setDeviceMatchingMultiple({{{"VendorID", kVendor}}});
        if (leftOut != Step::Register) {
            m_manager.registerDeviceMatchingCallback([this](const auto& device) { note("+", device); });
            m_manager.registerDeviceRemovalCallback([this](const auto& device) { note("-", device); });
        }
        if (leftOut != Step::Schedule)
            m_manager.setScheduled(true);
    }
    /// What is plugged from now on, by product.
    void plug(const std::vector<std::uint16_t>& products) {
        std::vector<HidrawEntry> entries;
        entries.reserve(products.size());
        for (const std::uint16_t nProduct : products)
            entries.push_back({node(nProduct), "", kVendor, nProduct, 1});
        m_nodes.listing.set(entries);
    }
    /// The system can't tell what is plugged, until plug().
    void fail() { m_nodes.listing.set(std::nullopt); }
    /// The next openings of a node are refused.
    void refuse(std::uint16_t nProduct, int nTimes) { m_nodes.refuse(node(nProduct), nTimes); }
    /// As when its permissions change.
    void touch(std::uint16_t nProduct) {
        std::ofstream(node(nProduct)).put(' ');
        std::filesystem::permissions(node(nProduct), std::filesystem::perms::owner_all);
    }
    /// The light behind a node that has been opened.
    std::shared_ptr<SocketLight> light(std::uint16_t nProduct) { return m_nodes.light(node(nProduct)); }

    /// The notices since the last call, as soon as there are so many.
    Names notices(std::size_t nExpected) {
        while (m_notices.size() < nExpected)
            m_mainThread.runPending();
        m_mainThread.runPending();
        return std::exchange(m_notices, {});
    }
    HidDeviceList devices() { return m_manager.copyDevices().value(); }
    Names present() {
        Names names;
        for (const HidDeviceRef& device : devices())
            names.push_back(name(device));
        return names;
    }
    std::string node(std::uint16_t nProduct) const { return m_directory / std::to_string(nProduct); }
    HidResult send(const HidDeviceRef& device) { return m_manager.deviceSetReport(device, 0, kReport); }

    static constexpr std::uint16_t kVendor = 0x1130;
    const std::vector<std::uint8_t> kReport = {1, 2, 3};
    CountingQueue m_mainThread;
    std::atomic<int> m_nListings = 0;
    bool m_bFollowedAtFirst = false; // when the nodes were listed for the first time
    SocketNodes m_nodes;
    HidrawManager m_manager{m_mainThread,
                            {[this] {
                                 if (m_nListings++ == 0)
                                     m_bFollowedAtFirst = udev_events::reaches("udev", "hidraw");
                                 return m_nodes.listing.get();
                             },
                             m_nodes.system().open}};

private:
    std::string name(const HidDeviceRef& device) {
        return std::to_string(m_manager.deviceGetProperty(device, "ProductID").value_or(-1));
    }
    void note(const char* strWhat, const HidDeviceRef& device) {
        m_notices.push_back(strWhat + name(device));
    }

    const std::filesystem::path m_directory =
        std::filesystem::temp_directory_path() / ("vellux-nodes-" + std::to_string(::getpid()));
    Names m_notices;
};

// A monitor of another subsystem, or of the kernel's own events, which come before the node has its
// permissions; one made after the first listing, which misses what happens in between, or left behind.
TEST_F(HidrawManagerFixture, FollowsWhatUdevAnnouncesOfHidrawNodes) {
    create();
    ASSERT_EQ(m_manager.open(), 0U);
    EXPECT_TRUE(m_bFollowedAtFirst);
    for (const char* strGroup : {"udev", "kernel"})
        for (const std::string strSubsystem : {"hidraw", "usb", "hid", "input"})
            EXPECT_EQ(udev_events::reaches(strGroup, strSubsystem.c_str()),
                      strGroup == std::string("udev") && strSubsystem == "hidraw")
                << strGroup << " " << strSubsystem;
    m_manager.close();
    EXPECT_FALSE(udev_events::reaches("udev", "hidraw"));
}

// Lights that leave because the system could not tell which there are, and what was asked for meanwhile
// forgotten; a node that stays open after its light has left.
TEST_F(HidrawManagerFixture, AListingThatFailsSaysNothingAndIsRepeated) {
    fail();
    create();
    ASSERT_EQ(m_manager.open(), 0U);
    plug({1});
    EXPECT_EQ(notices(1), Names{"+1"});
    const auto first = light(1);
    fail();
    const int nListings = m_nListings;
    m_manager.redeliver();
    while (m_nListings == nListings)
        std::this_thread::yield();
    EXPECT_EQ(present(), Names{"1"});
    plug({2});
    EXPECT_EQ(notices(2), (Names{"-1", "+2"}));
    EXPECT_EQ(first->waitUntilClosed(), 0);
}

// A light that isn't listed since it may not be opened; one that stays dark after permission was granted, or
// because it was granted during the attempt.
TEST_F(HidrawManagerFixture, ALightThatMayNotBeOpenedIsListedUntilItMay) {
    create();
    plug({1, 2});
    constexpr int kTries = 2; // at each listing
    refuse(1, 3 * kTries);
    refuse(2, 1);
    ASSERT_EQ(m_manager.open(), 0U);
    EXPECT_EQ(notices(2), (Names{"+1", "+2"}));
    const HidDeviceList listed = devices();
    EXPECT_EQ(m_manager.deviceOpenResult(listed[0]), static_cast<HidResult>(EACCES));
    EXPECT_TRUE(m_manager.isPermissionRefusal(EACCES) && m_manager.isPermissionRefusal(EPERM));
    EXPECT_EQ(send(listed[1]), 0U);
    const auto lights = m_manager.lights();
    ASSERT_EQ(lights.size(), 2U);
    EXPECT_EQ(lights[0].strNode, node(1));
    EXPECT_EQ(lights[0].nVendorID << 16 | lights[0].nProductID, kVendor << 16 | 1);
    EXPECT_TRUE(lights[0].nRefusal == EACCES && lights[1].nRefusal == 0);
    while (m_mainThread.nPosted < 4) // until it is let in, at the fourth listing at the latest
        touch(1);
    EXPECT_EQ(notices(2), (Names{"-1", "+1"}));
    EXPECT_EQ(present(), (Names{"1", "2"}));
    EXPECT_EQ(send(listed[0]), static_cast<HidResult>(EACCES));
    EXPECT_EQ(send(devices().front()), 0U);
    EXPECT_EQ(light(1)->reports().size(), 1U);
}

// A watch that is started twice, or asked while there is none; a manager with something left of the one
// before; a device that is opened though it matches nothing.
TEST_F(HidrawManagerFixture, CreatingResetsTheManager) {
    EXPECT_FALSE(m_manager.copyDevices());
    EXPECT_TRUE(m_manager.lights().empty());
    m_manager.redeliver();
    m_manager.close();
    create();
    plug({1});
    ASSERT_EQ(m_manager.open(), 0U);
    ASSERT_EQ(m_manager.open(), 0U); // changes nothing
    EXPECT_EQ(notices(1), Names{"+1"});
    m_mainThread.waitUntilPosted(1);
    plug({2});
    for (const Step leftOut : {Step::Match, Step::Register, Step::Schedule}) {
        create(leftOut);
        EXPECT_FALSE(m_manager.copyDevices());
        ASSERT_EQ(m_manager.open(), 0U);
        EXPECT_EQ(present().size(), leftOut == Step::Match ? 0U : 1U);
        EXPECT_EQ(light(2) == nullptr, leftOut == Step::Match);
        m_manager.redeliver();
        m_mainThread.waitUntilPosted(leftOut == Step::Match ? 0 : 3);
        EXPECT_EQ(notices(0), Names{});
    }
}

// A program whose end waits for a light that hangs.
TEST_F(HidrawManagerFixture, AHurryReachesEachLight) {
    create();
    plug({1});
    ASSERT_EQ(m_manager.open(), 0U);
    const auto device = devices().front();
    int nWrites = 0;
    kernel_writes::answer = [&nWrites] { return ++nWrites, ETIMEDOUT; };
    m_manager.beginShutdown();
    for (int nAttempt = 0; nAttempt < 3; ++nAttempt)
        EXPECT_EQ(send(device), static_cast<HidResult>(ETIMEDOUT));
    EXPECT_EQ(nWrites, 1);
}

TEST_F(HidrawManagerFixture, ReferencesOfOthersAreNoDevicesOfTheManager) {
    for (const HidDeviceRef& device : {HidDeviceRef(), std::make_shared<HidDevice>()}) {
        EXPECT_EQ(send(device), static_cast<HidResult>(ENODEV));
        EXPECT_EQ(m_manager.deviceOpenResult(device), static_cast<HidResult>(ENODEV));
        EXPECT_EQ(m_manager.deviceGetProperty(device, "VendorID"), std::nullopt);
    }
}

// A start that hangs or aborts, or a manager that is lost for good, when descriptors run out on the way; one
// that leaves descriptors open.
TEST(HidrawManager, OpensOrRefusesWithFewDescriptors) {
    CallQueue mainThread;
    HidrawManager manager(mainThread);
    rlimit usual{};
    ::getrlimit(RLIMIT_NOFILE, &usual);
    const auto openAndClose = [&manager] {
        EXPECT_TRUE(manager.create());
        const HidResult result = manager.open();
        manager.redeliver();
        manager.close();
        return result;
    };
    // What a sanitizer meets for the first time may cost it a descriptor.
    EXPECT_EQ(openAndClose(), 0U);
    EXPECT_NE(std::generic_category().message(EMFILE), "");
    const auto firstFree = [] {
        const int nFree = ::dup(0);
        ::close(nFree);
        return nFree;
    };
    const int nFirstFree = firstFree();
    for (int nFree = 0; nFree <= 6; ++nFree) {
        const rlimit few{static_cast<rlim_t>(nFirstFree + nFree), usual.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        EXPECT_EQ(openAndClose(), nFree == 0 ? HidResult{EMFILE} : 0U) << nFree;
    }
    ::setrlimit(RLIMIT_NOFILE, &usual);
    EXPECT_EQ(firstFree(), nFirstFree);
    EXPECT_EQ(manager.open(), 0U);
}

} // namespace
