// A user's session, and starts of the program in it.
#pragma once

#include "desktop/PrivateBus.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>

/// What a start finds.
struct Environment {
    bool bBus = false;
    enum { None, Runtime, Temporary } directory = None;
};

inline constexpr Environment kBus{true, Environment::None};
inline constexpr Environment kRuntime{false, Environment::Runtime};
inline constexpr Environment kTemporary{false, Environment::Temporary};
inline constexpr Environment kBoth{true, Environment::Runtime};

/// Starts of the program in one session.
class Session {
public:
    Session() {
        // A temporary directory with a file where our own directory would be.
        std::filesystem::create_directory(directory() + "/none");
        std::ofstream(directory() + "/none/vellux-" + std::to_string(::getuid()));
    }
    /// A start with the token that its launcher gave it, and with an option of InstanceHelper's.
    std::unique_ptr<ChildProcess> start(const Environment& environment, const std::string& strToken,
                                        const std::string& strOption = "") {
        const bool bRuntime = environment.directory == Environment::Runtime;
        const bool bTemporary = environment.directory == Environment::Temporary;
        return std::make_unique<ChildProcess>(
            std::vector<std::string>{"env", "-u", "DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN=" + strToken,
                                     "TMPDIR=" + directory() + (bTemporary ? "" : "/none"),
                                     "XDG_RUNTIME_DIR=" + (bRuntime ? directory() : ""),
                                     "DBUS_SESSION_BUS_ADDRESS=" + (environment.bBus ? m_strBus : m_strNoBus),
                                     INSTANCE_HELPER, strOption});
    }
    std::string directory() const { return m_directory.path().toStdString(); }
    std::string lockFile() const { return directory() + "/org.vellux.Vellux.lock"; }
    void endBus() { m_bus.reset(); }
    /// A session bus, with an address of its own; before the starts that find one.
    void startBus() {
        m_bus = std::make_unique<PrivateBus>(BusKind::Session);
        m_strBus = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS").toStdString();
    }

    std::string m_strNoBus = "unix:path=/nowhere"; ///< what those without a bus find

private:
    const QTemporaryDir m_directory;
    std::unique_ptr<PrivateBus> m_bus;
    std::string m_strBus;
};

/// A start, which is to take the place.
inline std::unique_ptr<ChildProcess> holding(std::unique_ptr<ChildProcess> start) {
    EXPECT_EQ(start->readLine(), "held");
    return start;
}

class SingleInstanceFixture : public testing::Test, public Session {
protected:
    void expectActivation(ChildProcess& first, const Environment& environment) {
        const auto second = start(environment, "t2");
        EXPECT_EQ(second->readLine(), "passed");
        EXPECT_EQ(first.readLine(), "activated t2");
        EXPECT_EQ(second->wait(), 0);
    }
};
