// Connect, Disconnect and the status monitor's one pass.
#include "fakes/ProgramFixture.h"
#include "fakes/ServerTexts.h"

#include <fcntl.h>
#include <fstream>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using vellux::HttpResponse;

const std::string kFieldsAlert = "alert Please ensure all fields are entered correctly",
                  kCancel = "cancel https://lync.example/ucwa/events?ack=1",
                  kPoll =
                      "poll GET https://lync.example/ucwa/events?ack=1 | Authorization: Bearer T0k3n | 15 s";

/// A program without a light, credentials typed, a server that lets everybody in.
class ConnectionFixture : public ProgramFixture {
protected:
    ConnectionFixture() {
        delegate().applicationDidFinishLaunching();
        scriptServer(R"({"availability":"Online"})");
        observeControls();
        type("lync.example", "CORP\\pat", "secret");
        desktop.whileAlertIsOpen = [this] {
            journal.add("under " + ui().buttonConnect()->title() +
                        (ui().buttonConnect()->isEnabled() ? ", enabled" : ", disabled"));
        };
    }
    void click() { ui().onConnectButtonClicked(*ui().buttonConnect()); }
    /// Waits for the end of the one monitor at work and gives all lines of these kinds.
    Lines passed(std::initializer_list<std::string_view> kinds = {}) {
        const auto bPassed = [this] { // by the journal: the model is ahead of it for a moment
            const Lines titles = journal.lines({"title"});
            return journal.count("connect enabled") > 0 && !titles.empty() &&
                   titles.back() != "title Connecting...";
        };
        runUntil(bPassed, "the monitor's pass");
        return journal.take(kinds);
    }
    Lines clickThrough(std::initializer_list<std::string_view> kinds = {}) {
        journal.clear();
        click();
        return passed(kinds);
    }
};

// The whole road from the click to the open channel; above all its order, and who is given the token (*).
TEST_F(ConnectionFixture, ConnectsStepByStep) {
    plugInFramed();
    const std::string strPlain =
        R"({"_links":{"events":{"href":"/ev"}},"_embedded":{"me":{"_links":{"presence":{"href":"/me"}}}}})";
    const std::string strOffer = R"({"_embedded":{"me":{"_links":{"makeMeAvailable":{"href":"/mma"}}}}})";
    transport.script("/ucwa/applications", {{strOffer, {}}, {strPlain, {}}});
    transport.script("/mma", "");
    transport.script("/me", R"({"availability":"Online"})");
    Lines lines = clickThrough();
    for (std::string& strLine : lines) {
        const bool bToken = strLine.find(" | Authorization: Bearer T0k3n | ") != std::string::npos;
        strLine = strLine.substr(0, strLine.find(" | ")) + (bToken ? " *" : "");
    }
    const std::string strUrl = "https://lync.example/";
    EXPECT_EQ(lines,
              (Lines{"status ", "connect disabled", "title Connecting...",
                     "request POST " + strUrl + "WebTicket/oauthtoken",
                     "request GET " + strUrl + "Autodiscover/AutodiscoverService.svc/root/oauth/user *",
                     "request POST " + strUrl + "ucwa/applications *", "request POST " + strUrl + "mma *",
                     "request POST " + strUrl + "ucwa/applications *", "request GET " + strUrl + "me *",
                     "title Disconnect", "report 55534243004002df", "status Online",
                     "poll GET " + strUrl + "ev *", "connect enabled"}));
}

// A failing step without its alert, in the wrong order, or that leaves a button nobody can press any more.
TEST_F(ConnectionFixture, FailingStepsAlertAndGiveTheButtonBack) {
    plugInFramed();
    const auto check = [&](const char* strPath, const HttpResponse& answer, const char* strStep,
                           const std::string& strFirstAlert = "") {
        scriptServer(R"({"availability":"Online"})");
        transport.script(strPath, {answer});
        Lines expected = {"status ", "connect disabled", "title Connecting..."};
        if (!strFirstAlert.empty())
            expected.insert(expected.end(), {strFirstAlert, "under Connecting..., disabled"});
        expected.insert(expected.end(), {"title Connect", std::string("alert Failed to ") + strStep,
                                         "under Connect, disabled", "connect enabled"});
        EXPECT_EQ(clickThrough({"title", "status", "connect", "alert", "under", "report", "poll"}), expected);
        EXPECT_NE(journal.take({"request"}).back().find(strPath), std::string::npos);
    };
    const char *strToken = "/WebTicket/oauthtoken",
               *strUser = "/Autodiscover/AutodiscoverService.svc/root/oauth/user";
    check(strToken, {}, "get OAuthToken", kConnectionAlert);
    check(strToken, {R"({"error":"invalid_grant"})", {}}, "get OAuthToken",
          "alert Username/Password Pair is invalid");
    check(strToken, {"<html>", {}}, "get OAuthToken");
    check(strUser, {}, "get ApplicationServiceURL", kConnectionAlert);
    check(strUser, {"{}", {}}, "get ApplicationServiceURL");
    check("/ucwa/applications", {}, "do SetupApplicationsAndGetPresenceURL", kConnectionAlert);
    check("/ucwa/applications", {"{}", {}}, "do SetupApplicationsAndGetPresenceURL");
    scriptServer("not JSON"); // without a presence the user is connected all the same, and the light off
    EXPECT_EQ(clickThrough({"title", "status", "alert", "report", "poll"}),
              (Lines{"status ", "title Connecting...", "title Disconnect", "report 55534243004002ff",
                     "status ", kPoll}));
    EXPECT_EQ(journal.take({"request"}).size(), 4U);
}

// Fields that start a connection that can't be meant, or a file overwritten by half an input.
TEST_F(ConnectionFixture, FieldsAreCheckedAndUsedAsTheyComeBackFromTheFile) {
    for (const Lines& texts : {Lines{"", "u", "p"}, Lines{"s", "", "p"}, Lines{"s", "u", ""}}) {
        type(texts[0], texts[1], texts[2]);
        journal.clear();
        click();
        EXPECT_EQ(journal.take(), (Lines{kFieldsAlert, "under Connect, enabled"}));
    }
    EXPECT_EQ(contentOf(settingsPath("configv31.bin")), "");
    type("lync.example", " ", "  "); // blanks are text
    EXPECT_TRUE(clickThrough({"request"}).front().ends_with("| grant_type=password&username= &password=  "));
    click(); // disconnects
    journal.clear();
    for (const Lines& texts : {Lines{"s;t", "u", "p"}, Lines{"s", ";", "p"}, Lines{"s", "u", "p;"}}) {
        const std::string strBefore = contentOf(settingsPath("configv31.bin"));
        type(texts[0], texts[1], texts[2]);
        click(); // saves, empties the status line, starts nothing
        EXPECT_NE(contentOf(settingsPath("configv31.bin")), strBefore);
    }
    ui().processLyncServerConnectionRequest(); // the credentials have been emptied
    EXPECT_EQ(passed(),
              (Lines{"status ", "status ", "status ", "connect disabled", "title Connecting...", kFieldsAlert,
                     "under Connecting..., disabled", "connect enabled", "title Connect"}));
}

// A full disk: the connection takes what the file holds, never what was typed.
TEST_F(ConnectionFixture, UnwritableFileConnectsWithTheEarlierCredentials) {
    clickThrough();
    click();
    const std::string strSaved = contentOf(settingsPath("configv31.bin"));
    const int nFile = memfd_create("sealed", MFD_ALLOW_SEALING | MFD_CLOEXEC); // not even root writes it
    ASSERT_EQ(write(nFile, strSaved.data(), strSaved.size()), static_cast<ssize_t>(strSaved.size()));
    ASSERT_EQ(fcntl(nFile, F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_SHRINK | F_SEAL_GROW), 0);
    std::filesystem::remove(settingsPath("configv31.bin"));
    std::filesystem::create_symlink("/proc/self/fd/" + std::to_string(nFile), settingsPath("configv31.bin"));
    type("other.example", "CORP\\eve", "else");
    const Lines requests = clickThrough({"request"});
    close(nFile);
    ASSERT_EQ(requests.size(), 4U);
    EXPECT_TRUE(requests.front().starts_with("request POST https://lync.example/") &&
                requests.front().ends_with("username=CORP\\pat&password=secret"));
    click();
    std::filesystem::remove(settingsPath("configv31.bin"));
    std::filesystem::create_directory(settingsPath("configv31.bin")); // neither written nor read
    journal.clear();
    click();
    endThreads();
    EXPECT_EQ(journal.take(), Lines{"status "});
}

// A light left on, a long poll left open, or a box that brings back the presence of a connection that is
// over.
TEST_F(ConnectionFixture, DisconnectsStepByStep) {
    plugInV30();
    scriptPresence(R"({"availability":"Online","activity":"on-the-phone"})");
    choose(FlashOnCall, 1);
    clickThrough();
    click(); // while the light flashes red by itself
    EXPECT_EQ(journal.take(), (Lines{kCancel, "title Connect", "status Disconnected",
                                     "report ff0000100000ffff", "report ff0000110000ffff"}));
    EXPECT_EQ(client().getPresenceStatus(), "");
    choose(OffOnAvailable, 1);
    EXPECT_EQ(journal.take(), Lines{});
    for (const char* strTitle : {"Connecting...", "", "connect"}) {
        ui().buttonConnect()->setTitle(strTitle);
        journal.clear();
        click();
        EXPECT_EQ(journal.take(), Lines{});
    }
}

// A monitor that overrules the mode the user has changed to meanwhile.
TEST_F(ConnectionFixture, ManualModeWhileConnectingKeepsLightAndStatusLine) {
    clock.letRun(); // the manual worker's half periods don't matter here
    holdRequests("/me/presence");
    click();
    reached.acquire();
    ui().setManualMode(*ui().buttonSelectManualMode());
    journal.clear();
    goOn.release(2); // also for the event's request
    EXPECT_EQ(passed({"title", "connect", "status", "poll"}),
              (Lines{"title Disconnect", kPoll, "connect enabled"}));
    journal.clear();
    transport.lastPoll().simulateData(batch("/n"));
    EXPECT_EQ(journal.take().size(), 2U); // the presence is asked for, the next poll opened, nothing shown
}

// A thread's stack and handle kept of every connection there has ever been.
TEST_F(ConnectionFixture, AHundredConnectionsLeaveNothingBehind) {
    const auto mapped = [] { // bytes
        std::size_t nPages = 0;
        std::ifstream("/proc/self/statm") >> nPages;
        return nPages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    };
    std::size_t nBefore = 0;
    for (int n = 0; n < 100; ++n) {
        connect();
        click();
        journal.clear();
        if (n == 10)
            nBefore = mapped();
    }
    EXPECT_LT(mapped(), nBefore + (std::size_t{256} << 20)); // 89 stacks of 8 MiB are more
}

} // namespace
