// The adapters to Linux as far as any machine shows them, whatever devices it has.

#include "adapters/linux/AutostartEntry.h"
#include "adapters/linux/StandardDirectories.h"
#include "adapters/linux/SystemClock.h"
#include "adapters/linux/TerminationWatch.h"
#include "fakes/Sanitizers.h"
#include "platform/PrivateDirectory.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <csignal>
#include <semaphore>

using namespace vellux;

namespace {

// Files in the wrong place for anyone who has set one of the variables, sets it wrongly or not at all.
TEST(StandardDirectories, DataHomeComesFromTheFirstAbsoluteValue) {
    constexpr std::nullopt_t unset = std::nullopt;
    const struct {
        UserEnvironment environment;
        const char* strDataHome;
    } rows[] = {
        {{"/data//", "/home/x", "/account"}, "/data"},
        {{"/", "/home/x", "/account"}, "/"},
        {{"", "/home/x", "/account"}, "/home/x/.local/share"},
        {{"data", "/home/x", "/account"}, "/home/x/.local/share"},
        {{"~/data", "/home/x/", "/account"}, "/home/x/.local/share"},
        {{unset, "", "/account"}, "/account/.local/share"},
        {{unset, "home/x", "/account/"}, "/account/.local/share"},
        {{unset, "/", "/account"}, "/.local/share"},
        {{unset, unset, unset}, "/.local/share"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(userDataHome(row.environment), row.strDataHome);
    EXPECT_EQ(userConfigHome({"/data", "/home/x", "/account", "/config/"}), "/config");
    EXPECT_EQ(userConfigHome({"/data", "/home/x", "/account", "config"}), "/home/x/.config");
}

/// A user's configuration directory, and an entry in it.
class AutostartFixture : public testing::Test {
protected:
    const std::unique_ptr<simulator::PrivateDirectory> m_directory = simulator::PrivateDirectory::create();
    const std::string m_strConfig = m_directory->path() + "/a/config";
    const AutostartEntry m_entry{m_strConfig, "/usr/bin/vellux"};
};

// An entry that a user switched off in the desktop's own list, and that counts as on; one that starts
// nothing.
TEST_F(AutostartFixture, IsOnUnlessTheFileSaysOtherwise) {
    const std::string strEntry = "[Desktop Entry]\nExec=vellux\n";
    const struct {
        std::string strText;
        bool bEnabled;
    } rows[] = {
        {strEntry + "Hidden=false\nX-GNOME-Autostart-enabled=true\n", true},
        {strEntry + "Hidden=true\n", false},
        {"# Hidden\r\n[Desktop Entry]\r\nExec=vellux\r\nHidden = true\r", false},
        {strEntry + "X-GNOME-Autostart-enabled=false", false},
        {"Hidden=true\n" + strEntry + "[Other]\nHidden=true\nX-GNOME-Autostart-enabled=false\n", true},
        {"[Desktop Entry]\nName=Vellux\n[Other]\nExec=vellux\n", false},
        {"", false},
        {strEntry + std::string(70'000, '#'), false},
    };
    EXPECT_FALSE(m_entry.isEnabled());
    EXPECT_EQ(m_entry.setEnabled(false), std::nullopt); // nor is its directory there
    for (const auto& row : rows) {
        EXPECT_EQ(m_entry.setEnabled(true), std::nullopt);
        EXPECT_TRUE(m_entry.isEnabled());
        writeFile(m_entry.path(), row.strText, FileAccess::Default);
        EXPECT_EQ(m_entry.isEnabled(), row.bEnabled) << row.strText.substr(0, 200);
    }
    EXPECT_EQ(m_entry.setEnabled(false), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(m_entry.path()));
    std::filesystem::create_directory(m_entry.path());
    EXPECT_FALSE(m_entry.isEnabled());
    EXPECT_EQ(m_entry.setEnabled(true), "Is a directory");
    EXPECT_EQ(m_entry.setEnabled(false), "Is a directory");
    const auto files = std::filesystem::directory_iterator(m_strConfig + "/autostart");
    EXPECT_EQ(std::distance(begin(files), end(files)), 1); // nothing half written
    EXPECT_EQ(AutostartEntry("/proc", "/usr/bin/vellux").setEnabled(true), "No such file or directory");
}

// A program that is not started because of its path, or another one that is.
TEST(Autostart, QuotesThePath) {
    const struct {
        const char *strProgram, *strExec, *strTryExec;
    } rows[] = {
        {"/usr/bin/vellux", R"("/usr/bin/vellux" --hidden)", "/usr/bin/vellux"},
        {"/a b/50%", R"("/a b/50%%" --hidden)", "/a b/50%"},
        {R"(/a"b`c$d\e)", R"("/a\\"b\\`c\\$d\\\\e" --hidden)", R"(/a"b`c$d\\e)"},
        {"/a\nExec=b", R"("/a\nExec=b" --hidden)", R"(/a\nExec=b)"},
    };
    for (const auto& row : rows) {
        const std::string strText = autostartText(row.strProgram);
        EXPECT_NE(strText.find(std::string("\nExec=") + row.strExec + "\nTryExec=" + row.strTryExec + "\n"),
                  std::string::npos)
            << strText;
    }
    EXPECT_EQ(runningProgram(), std::filesystem::canonical("/proc/self/exe").string());
}

TEST(SystemClock, SleepsAtLeastAsLongAsAskedAndNeverForNothing) {
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
