// What a scenario has at hand: a presence server that the guest trusts, the program as an ordinary user with a
// home of its own, and the rules that say who may open a light.
#pragma once

#include "Light.h"
#include "server/PresenceServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>

/// What the slow guest may take for anything.
inline constexpr std::chrono::seconds kLongest(30);
/// Waits for a state; false when it does not come in time.
bool soon(const std::function<bool()>& condition, std::chrono::seconds limit = kLongest);
/// Gives something that must not happen the time to happen.
void waitInVain();
/// Runs a shell command as root; its exit status.
int root(const std::string& strCommand);

/// A running program, ended with this object if it has not been before.
class Program {
public:
    using Environment = std::map<std::string, std::string>;
    Program(const std::string& strProgram, const Environment& environment);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    bool isRunning();
    /// With SIGTERM.
    void askToEnd();
    /// Asks it to end; its exit status, -1 after a signal, absent when it goes on.
    std::optional<int> end(std::chrono::seconds limit = kLongest);

    /// Whether its main thread waits for events: whatever came before has been done.
    bool isAtRest() const;
    std::size_t threads() const;
    std::size_t handles() const;
    /// Of hidraw nodes.
    std::size_t lightHandles() const;
    /// In memory, in KiB.
    long residentSize() const;

private:
    pid_t m_nPid = -1;
    bool m_bAsked = false;
    std::optional<int> m_nStatus;
};

class KernelTest : public testing::Test {
protected:
    KernelTest();
    ~KernelTest() override;

    /// Follows the presence, signed in by itself; returns when the poll is open. On a call it flashes red, fast.
    Program& startFollowing(const std::string& strProgram = program());
    /// Shows a colour; speed 0 is steady, 3 is fast. Returns when the program has come through its start.
    Program& startShowing(int nColour, int nSpeed = 0, const std::string& strProgram = program());
    /// Ends it in order.
    void endProgram(std::chrono::seconds limit = kLongest);

    /// The light has come to show this, and the program has nothing more to do.
    testing::AssertionResult comesToShow(const Light& light, const Bytes& report) const;

    /// Its first report comes when udev is done with it, or soon after.
    static void expectPromptly(const Light& light);

    static std::string program();
    /// The one with the address sanitizer; "" when there is none.
    static std::string sanitizedProgram();
    /// Makes this the one rule for lights, for nodes to come.
    static void setRule(const std::string& strRule);
    /// The nodes of hidraw devices there are now.
    static std::size_t nodes();

    Program::Environment m_environment;
    std::unique_ptr<vellux::simulator::PresenceServer> m_server;
    std::unique_ptr<Program> m_program;

private:
    void start(const std::string& strProgram, const std::string& strWindowState);

    std::string m_strHome;
};
