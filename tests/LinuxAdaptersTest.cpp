// The adapters to Linux as far as any machine shows them, whatever devices it has.

#include "adapters/hidraw/HidrawManager.h"
#include "adapters/linux/StandardDirectories.h"
#include "adapters/linux/SystemClock.h"
#include "adapters/linux/TerminationWatch.h"
#include "fakes/Sanitizers.h"
#include "fakes/Watchdog.h"
#include "threads/CallQueue.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <semaphore>
#include <sys/resource.h>
#include <system_error>
#include <thread>
#include <unistd.h>

using namespace vellux;

namespace {

// Files in the wrong place for anyone who has set one of the variables, sets it wrongly or not at all.
TEST(StandardDirectories, DataHomeComesFromTheFirstAbsoluteValue) {
    constexpr std::nullopt_t unset = std::nullopt;
    const struct {
        UserEnvironment environment;
        const char* strDataHome;
    } rows[] = {
        {{"/data", "/home/x", "/account"}, "/data"},
        {{"/data//", "/home/x", "/account"}, "/data"},
        {{"/", "/home/x", "/account"}, "/"},
        {{"", "/home/x", "/account"}, "/home/x/.local/share"},
        {{"data", "/home/x", "/account"}, "/home/x/.local/share"},
        {{"~/data", "/home/x/", "/account"}, "/home/x/.local/share"},
        {{unset, "", "/account"}, "/account/.local/share"},
        {{unset, "home/x", "/account/"}, "/account/.local/share"},
        {{unset, unset, "/account"}, "/account/.local/share"},
        {{unset, "/", "/account"}, "/.local/share"},
        {{unset, unset, unset}, "/.local/share"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(userDataHome(row.environment), row.strDataHome);
}

TEST(StandardDirectories, TheReaderTellsUnsetFromEmpty) {
    ::unsetenv("XDG_DATA_HOME");
    ::setenv("HOME", "", 1);
    const UserEnvironment environment = readUserEnvironment();
    EXPECT_EQ(environment.strXdgDataHome, std::nullopt);
    EXPECT_EQ(environment.strHome, "");
    EXPECT_EQ(userDataHome(environment).front(), '/');
}

TEST(SystemClock, SleepsAtLeastAsLongAsAskedAndNeverForNothing) {
    const Watchdog watchdog("sleep");
    SystemClock clock;
    const auto begin = std::chrono::steady_clock::now();
    clock.sleep(Seconds(0.02));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
    clock.sleep(Seconds(0));
    clock.sleep(Seconds(-1e300));
}

// An impatient Ctrl-C that is not heard; a late hang-up that kills; an end that is asked for twice.
TEST(TerminationWatch, OnlyALaterRequestOfAUserEndsAtOnce) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // the watch makes a thread in the child
    expectThreadsAtTheEnd();
    const Watchdog watchdog("termination");
    EXPECT_EXIT(
        {
            std::counting_semaphore<> requests(0);
            const auto watch = TerminationWatch::start([&] { requests.release(); });
            std::raise(SIGHUP);
            requests.acquire();
            std::raise(SIGHUP);
            std::raise(SIGINT);
            std::this_thread::sleep_for(std::chrono::milliseconds(2010));
            std::raise(SIGHUP);
            std::fputs(requests.try_acquire() ? "asked twice" : "asked once", stderr);
            std::raise(SIGINT);
        },
        testing::ExitedWithCode(128 + SIGINT), "asked once");
}

// A watch that can't be ended or started again, and notices for nobody.
TEST(HidrawManager, OpensAndClosesAgainAndAgain) {
    const Watchdog watchdog("device watch");
    CallQueue mainThread;
    HidrawManager manager(mainThread);
    int nNotices = 0;
    EXPECT_FALSE(manager.copyDevices());
    manager.redeliver();
    manager.close();
    for (int n = 0; n < 3; ++n) {
        ASSERT_TRUE(manager.create());
        manager.setDeviceMatchingMultiple({{{"VendorID", -1}}}); // no device has it
        manager.registerDeviceMatchingCallback([&](const HidDeviceRef&) { ++nNotices; });
        manager.registerDeviceRemovalCallback([&](const HidDeviceRef&) { ++nNotices; });
        manager.scheduleWithRunLoop();
        ASSERT_EQ(manager.open(), 0U);
        EXPECT_EQ(manager.copyDevices(), HidDeviceList{});
        manager.redeliver();
        mainThread.runPending();
        manager.close();
        EXPECT_FALSE(manager.copyDevices());
    }
    mainThread.runPending();
    EXPECT_EQ(nNotices, 0);
}

// A start that hangs or aborts, or a manager that is lost for good, when descriptors run out on the way.
TEST(HidrawManager, OpensOrRefusesWithFewDescriptors) {
    const Watchdog watchdog("device watch");
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
    const int nFirstFree = ::dup(0);
    ::close(nFirstFree);
    for (int nFree = 0; nFree <= 6; ++nFree) {
        const rlimit few{static_cast<rlim_t>(nFirstFree + nFree), usual.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        EXPECT_EQ(openAndClose(), nFree == 0 ? HidResult{EMFILE} : 0U) << nFree;
    }
    ::setrlimit(RLIMIT_NOFILE, &usual);
    EXPECT_EQ(manager.open(), 0U);
}

TEST(HidrawManager, ReferencesOfOthersAreNoDevicesOfTheManager) {
    CallQueue mainThread;
    HidrawManager manager(mainThread);
    const std::uint8_t byPayload = 0;
    for (const HidDeviceRef& device : {HidDeviceRef(), std::make_shared<HidDevice>()}) {
        EXPECT_EQ(manager.deviceSetReport(device, HidReportType::Output, 0, {&byPayload, 1}), ENODEV);
        EXPECT_EQ(manager.deviceGetProperty(device, "VendorID"), std::nullopt);
    }
}

} // namespace
