// What a scenario has at hand: a presence server that the guest trusts, the program as an ordinary user with
// a home of its own, and the rules that say who may open a light.
#pragma once

#include "desktop/ChildProcess.h"
#include "desktop/ProgramHome.h"
#include "kernel/KernelLight.h"
#include "server/PresenceServer.h"

#include <gtest/gtest.h>

#include <memory>

using vellux::simulator::LightModel;

/// What lights show, by the index in the window's longer list. Lights with codes know no orange.
inline constexpr const char* kColours[] = {"Red",  "Green", "Yellow", "Purple", "Cyan",
                                           "Blue", "White", "Orange", "None"};
enum { kRed, kGreen, kYellow, kPurple, kCyan, kBlue, kWhite, kOrange, kNone };

/// What a light of a model makes of a report: "Red", "Green flashing fast", "None"; else what is wrong with
/// it.
std::string meaning(LightModel model, const vellux::simulator::Bytes& report);

/// Gives something that must not happen the time to happen.
void waitInVain();
/// Runs a shell command as root; its exit status.
int root(const std::string& strCommand);

/// The program as an ordinary user, and as the kernel sees it.
class Program : public ChildProcess {
public:
    explicit Program(const std::string& strProgram);

    /// Whether its main thread waits for events: whatever came before has been done.
    bool isAtRest() const;
    std::size_t threads() const;
    std::size_t handles() const;
    /// Of hidraw nodes.
    std::size_t lightHandles() const;
    /// In memory, in KiB.
    long residentSize() const;

private:
    std::string place() const { return "/proc/" + std::to_string(pid()) + "/"; }
};

class KernelFixture : public testing::Test {
protected:
    KernelFixture();
    ~KernelFixture() override;

    /// Follows the presence, signed in by itself; returns when the poll is open. On a call it flashes red,
    /// fast.
    void startFollowing(const std::string& strProgram = program());
    /// Shows a colour; speed 0 is steady, 3 is fast. Returns when the program has begun to run.
    void startShowing(int nColour, int nSpeed = 0, const std::string& strProgram = program());
    void askProgramToEnd();
    /// Asks it, if that has not been done, and waits for its end in order.
    void endProgram();

    /// The light has come to show this, and the program has nothing more to do.
    testing::AssertionResult comesToShow(const vellux::simulator::KernelLight& light, LightModel model,
                                         const std::string& strShown) const;

    /// Its first report comes when udev is done with it, or soon after.
    static void expectPromptly(const vellux::simulator::KernelLight& light);

    static std::string program();
    /// The one with the address sanitizer; "" when there is none.
    static std::string sanitizedProgram();
    /// Makes this the one rule for lights, for nodes to come.
    static void setRule(const std::string& strRule);
    /// The nodes of hidraw devices there are now.
    static std::size_t nodes();

    const ProgramHome m_home{"/run/vellux-home"};
    std::unique_ptr<vellux::simulator::PresenceServer> m_server;
    std::unique_ptr<Program> m_program;

private:
    void start(const std::string& strProgram, const std::string& strWindowState);

    bool m_bAsked = false;
};
