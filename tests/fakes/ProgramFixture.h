// The fixture of most tests: the real modules on fake ports, with one journal of all that crosses them.
#pragma once

#include "Program.h"
#include "VelluxAppDelegate.h"
#include "VelluxControl/VelluxControl.h"
#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeHidManager.h"
#include "fakes/FakeHttpTransport.h"
#include "fakes/Journal.h"
#include "platform/PrivateDirectory.h"
#include "ports/Platform.h"
#include "threads/CallQueue.h"
#include "threads/WorkerThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <semaphore>

/// The test's thread is the main thread. Each test is a process of its own, so the shared instances are new.
class ProgramFixture : public testing::Test {
protected:
    using Lines = Journal::Lines;

    ProgramFixture() : ProgramFixture(std::make_unique<vellux::CallQueue>()) {}
    /// With a main thread's queue of another kind.
    explicit ProgramFixture(std::unique_ptr<vellux::CallQueue> itsQueue)
        : ProgramFixture(std::move(itsQueue), kNoProgram) {
        makeProgram(transport, desktop);
    }
    enum NoProgram { kNoProgram };
    /// With ports of the fixture's own, which makes the program from them.
    ProgramFixture(std::unique_ptr<vellux::CallQueue> itsQueue, NoProgram);
    void makeProgram(vellux::HttpTransport& itsTransport, vellux::Desktop& itsDesktop);
    ~ProgramFixture() override;
    /// Ends the program, whatever the test left running, so that no thread outlives the ports. Once more does
    /// nothing.
    void endProgram();

    /// Journals "title ...", "status ...", "connect enabled|disabled" and, with bAllControls, every other
    /// write to a control as "NAME ...".
    void observeControls(bool bAllControls = false);

    /// Runs the main thread's calls until the condition holds; fails the test after 60 seconds.
    void runUntil(const std::function<bool()>& condition, const char* strWhat);
    /// Until the Connect button has the title and can be pressed: a status monitor has done its pass, and all
    /// who observe the button know.
    void runUntilConnectShows(const std::string& strTitle);
    /// Holds each request to a URL that ends so, on its thread: it releases `reached` and waits for `goOn`.
    void holdRequests(const std::string& strEnd);
    /// Closes the main thread's queue, as quitting does, and waits for the end of every other thread.
    void endThreads();
    /// Runs what is queued now, and what that queues in turn.
    virtual void runPending() {
        while (mainThread.runPending()) {
        }
    }
    /// Whether a user sees the Connect button with this title and can press it. The model alone is ahead of
    /// its observers for a moment.
    virtual bool isConnectUsable(const std::string& strTitle);

    /// A light is there and its arrival noticed; nothing of that is left in the journal.
    std::shared_ptr<FakeHidDevice> plugIn(std::int64_t nVendor, std::int64_t nProduct);
    std::shared_ptr<FakeHidDevice> plugInV30() { return plugIn(0x2C0D, 0x0006); }
    std::shared_ptr<FakeHidDevice> plugInFramed() { return plugIn(0x1130, 0x0001); }
    std::shared_ptr<FakeHidDevice> plugInPlain() { return plugIn(0x1130, 0x1E00); }

    /// Scripts a server that lets everybody in: sign-in, registration (one POST, no make-me-available), and a
    /// presence resource with the given content.
    void scriptServer(const std::string& strPresenceBody);
    void scriptPresence(const std::string& strPresenceBody);
    /// Fills the three text fields.
    void type(const std::string& strServer, const std::string& strUser, const std::string& strPassword);
    /// Types credentials and presses Connect, then waits for "Disconnect".
    void connect();

    VelluxWindowUi& ui() { return VelluxWindowUi::sharedVelluxWindowUi(); }
    VelluxHttp& client() { return VelluxHttp::sharedVelluxHttp(); }
    VelluxAppDelegate& delegate() { return VelluxAppDelegate::sharedVelluxAppDelegate(); }

    enum Choice { ManualColour, ManualSpeed, SyncColour, SyncSpeed, FlashOnCall, OffOnAway, OffOnAvailable };
    /// The user selects a position or sets a box, as a view carries it out: the model first, then the
    /// operation.
    void choose(Choice choice, std::int64_t nPosition);

    std::string settingsPath(const std::string& strName) const;
    static std::string contentOf(const std::string& strPath);
    static void writeContent(const std::string& strPath, const std::string& strContent);

    const std::unique_ptr<vellux::simulator::PrivateDirectory> itsDirectory =
        vellux::simulator::PrivateDirectory::create();
    const std::filesystem::path directory = itsDirectory->path();
    Journal journal;
    /// Lines of these kinds must all have been asked for, or cleared, when the test ends.
    Journal::Kinds minded = {"alert", "request"};
    std::counting_semaphore<> reached{0}, goOn{0};
    const std::unique_ptr<vellux::CallQueue> queue;
    vellux::CallQueue& mainThread = *queue;
    FakeHidManager hid{journal, mainThread};
    FakeHttpTransport transport{journal};
    FakeClock clock{journal};
    FakeDesktop desktop{journal, directory.string()};
    std::optional<vellux::Program> program;

    /// To be called again by whoever adds observers of the Connect button: this one must be the last.
    void watchConnect();

private:
    std::vector<vellux::Observation> observations;
    std::atomic<bool> bConnectNoticed{
        false}; // all other observers know whether the Connect button is enabled
    vellux::Observation connectWatch;
};
