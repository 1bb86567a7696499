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
#include <csignal>
#include <semaphore>
#include <sys/resource.h>
#include <system_error>
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

} // namespace
