// The manager and its device watch, on nodes that a test lists and opens.

#include "adapters/hidraw/HidrawManager.h"
#include "fakes/KernelWrites.h"
#include "fakes/Watchdog.h"
#include "kernel/SocketLight.h"
#include "threads/CallQueue.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <sys/resource.h>
#include <system_error>

using namespace vellux;

namespace {

using Names = std::vector<std::string>;

/// Knows how many calls have been posted.
class CountingQueue : public CallQueue {
public:
    void post(std::function<void()> call) override {
        CallQueue::post(std::move(call));
        ++nPosted;
    }
    std::atomic<int> nPosted = 0;
};

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
    void plug(const std::vector<std::uint16_t>& products, std::uint16_t nVendor = kVendor) {
        std::vector<HidrawEntry> entries;
        entries.reserve(products.size());
        for (const std::uint16_t nProduct : products)
            entries.push_back({node(nProduct), "", nVendor, nProduct, 1});
        m_listed.set(entries);
    }
    /// The system can't tell what is plugged, until plug().
    void fail() { m_listed.set(std::nullopt); }
    /// The next openings of a node are refused.
    void refuse(std::uint16_t nProduct, int nTimes) {
        m_refusals.update([&](auto& refusals) { refusals[node(nProduct)] = nTimes; });
    }
    /// As when its permissions change.
    void touch(std::uint16_t nProduct) {
        std::ofstream(node(nProduct)).put(' ');
        std::filesystem::permissions(node(nProduct), std::filesystem::perms::owner_all);
    }
    /// The light behind a node that has been opened.
    std::shared_ptr<SocketLight> light(std::uint16_t nProduct) {
        return m_opened.with([&](const auto& opened) { return opened.at(node(nProduct)); });
    }

    /// The notices since the last call, as soon as there are so many.
    Names notices(std::size_t nExpected) {
        while (m_notices.size() < nExpected)
            m_mainThread.runPending();
        m_mainThread.runPending();
        return std::exchange(m_notices, {});
    }
    /// Waits until so many calls have been posted since the last call, and leaves them queued.
    void waitUntilPosted(int nCalls) {
        while (m_mainThread.nPosted < nCalls)
            std::this_thread::yield();
        m_mainThread.nPosted -= nCalls;
    }
    HidDeviceList devices() { return m_manager.copyDevices().value(); }
    Names present() {
        Names names;
        for (const HidDeviceRef& device : devices())
            names.push_back(name(device));
        return names;
    }
    HidResult send(const HidDeviceRef& device) { return m_manager.deviceSetReport(device, 0, kReport); }

    static constexpr std::uint16_t kVendor = 0x1130;
    const std::vector<std::uint8_t> kReport = {1, 2, 3};
    const Watchdog m_watchdog{"device watch"};
    CountingQueue m_mainThread;
    std::atomic<int> m_nListings = 0;
    HidrawManager m_manager{m_mainThread,
                            {[this] {
                                 ++m_nListings;
                                 return m_listed.get();
                             },
                             [this](const auto& str) { return open(str); }}};

private:
    HidrawNode open(const std::string& strPath) {
        if (m_refusals.with([&](const auto& refusals) {
                const auto it = refusals.find(strPath);
                return it != refusals.end() && it->second > 0;
            })) {
            m_refusals.update([&](auto& refusals) { --refusals[strPath]; });
            return {-1, EACCES};
        }
        const auto light = std::make_shared<SocketLight>();
        m_opened.update([&](auto& opened) { opened[strPath] = light; });
        return light->node();
    }
    std::string node(std::uint16_t nProduct) const { return m_directory / std::to_string(nProduct); }
    std::string name(const HidDeviceRef& device) {
        return std::to_string(m_manager.deviceGetProperty(device, "ProductID").value_or(-1));
    }
    void note(const char* strWhat, const HidDeviceRef& device) {
        m_notices.push_back(strWhat + name(device));
    }

    const std::filesystem::path m_directory =
        std::filesystem::temp_directory_path() / ("vellux-nodes-" + std::to_string(::getpid()));
    Names m_notices;
    Shared<std::optional<std::vector<HidrawEntry>>> m_listed{std::vector<HidrawEntry>()};
    Shared<std::map<std::string, int>> m_refusals;
    Shared<std::map<std::string, std::shared_ptr<SocketLight>>> m_opened;
};

// Notices in the wrong order, a light that loses the head of the list to a newcomer, from within open(), or
// of other makers' devices; a light that is opened at each listing; a node that stays open after its light
// has left.
TEST_F(HidrawManagerFixture, NoticesAreTheDifferenceOfTwoListings) {
    create();
    plug({1, 2});
    ASSERT_EQ(m_manager.open(), 0U);
    EXPECT_EQ(present(), (Names{"1", "2"}));
    waitUntilPosted(2);
    EXPECT_EQ(notices(2), (Names{"+1", "+2"}));
    const auto first = light(1);
    const auto second = light(2);

    plug({3, 2});
    m_manager.redeliver();
    EXPECT_EQ(notices(4), (Names{"-1", "-2", "+2", "+3"}));
    EXPECT_EQ(present(), (Names{"2", "3"}));
    EXPECT_EQ(first->waitUntilClosed(), 0);
    EXPECT_EQ(light(2), second);
    EXPECT_EQ(send(devices().back()), 0U);
    EXPECT_TRUE(second->reports().empty());
    EXPECT_EQ(light(3)->reports().size(), 1U);

    plug({4}, 0x046D);
    m_manager.redeliver();
    EXPECT_EQ(notices(2), (Names{"-2", "-3"}));
}

// Lights that leave because the system could not tell which there are, and what was asked for meanwhile
// forgotten.
TEST_F(HidrawManagerFixture, AListingThatFailsSaysNothingAndIsRepeated) {
    fail();
    create();
    ASSERT_EQ(m_manager.open(), 0U);
    plug({1});
    EXPECT_EQ(notices(1), Names{"+1"});
    fail();
    const int nListings = m_nListings;
    m_manager.redeliver();
    while (m_nListings == nListings)
        std::this_thread::yield();
    EXPECT_EQ(present(), Names{"1"});
    plug({1, 2});
    EXPECT_EQ(notices(3), (Names{"-1", "+1", "+2"}));
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
    EXPECT_FALSE(m_manager.isPermissionRefusal(ENODEV));
    EXPECT_EQ(send(listed[0]), static_cast<HidResult>(EACCES));
    EXPECT_EQ(m_manager.deviceOpenResult(listed[1]), 0U);
    EXPECT_EQ(send(listed[1]), 0U);

    while (m_mainThread.nPosted < 4) // until it is let in, at the fourth listing at the latest
        touch(1);
    EXPECT_EQ(notices(2), (Names{"-1", "+1"}));
    EXPECT_EQ(present(), (Names{"1", "2"}));
    EXPECT_EQ(send(listed[0]), static_cast<HidResult>(EACCES));
    EXPECT_EQ(send(devices().front()), 0U);
    EXPECT_EQ(light(1)->reports().size(), 1U);
}

// Notices for nobody, or of another session; a watch that can't be ended or started again.
TEST_F(HidrawManagerFixture, NoticesAreForTheSessionThatListens) {
    EXPECT_FALSE(m_manager.copyDevices());
    m_manager.redeliver();
    m_manager.close();
    create();
    plug({1});
    for (int nSession = 0; nSession < 3; ++nSession) {
        ASSERT_EQ(m_manager.open(), 0U);
        ASSERT_EQ(m_manager.open(), 0U); // changes nothing
        waitUntilPosted(1);
        if (nSession == 1) {
            EXPECT_EQ(notices(1), Names{"+1"});
            m_manager.setScheduled(false);
            m_manager.redeliver();
            waitUntilPosted(2);
            EXPECT_EQ(notices(0), Names{});
            m_manager.setScheduled(true);
        }
        const auto device = devices().front();
        m_manager.close();
        EXPECT_FALSE(m_manager.copyDevices());
        EXPECT_EQ(send(device), 0U);
    }
    EXPECT_EQ(notices(0), Names{});

    // Nothing is left of the manager before.
    for (const Step leftOut : {Step::Match, Step::Register, Step::Schedule}) {
        create(leftOut);
        EXPECT_FALSE(m_manager.copyDevices());
        ASSERT_EQ(m_manager.open(), 0U);
        EXPECT_EQ(present().size(), leftOut == Step::Match ? 0U : 1U);
        m_manager.redeliver();
        waitUntilPosted(leftOut == Step::Match ? 0 : 3);
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
    ::alarm(60); // ends a hang; a watchdog's thread might take a descriptor at any time
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
