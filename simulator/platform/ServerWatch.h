// Prints what the presence server sees.
#pragma once

#include "platform/Changes.h"
#include "platform/Console.h"
#include "server/PresenceServerOptions.h"

#include <string>

namespace vellux::simulator {

/// Prints `request METHOD target` for each request as it comes, and `presence WORD` for each change of the
/// user's presence at the server.
class ServerWatch : public PresenceServerObserver {
public:
    /// Both arguments must outlive the watch.
    ServerWatch(Console& console, Changes& changes) : m_console(console), m_changes(changes) {}

    void requestArrived(std::string_view strMethod, std::string_view strTarget) override {
        m_console.print("request " + std::string(strMethod) + " " + std::string(strTarget));
    }
    void presenceChanges(std::string_view strAvailability) override {
        m_console.print("presence " + std::string(strAvailability));
    }
    void pollsChanged() override { m_changes.notify(); }

private:
    Console& m_console;
    Changes& m_changes;
};

} // namespace vellux::simulator
