// Plays a script's steps, one after the other, on a thread of its own.
#pragma once

#include "day/Dependencies.h"
#include "day/Script.h"
#include "day/UserActions.h"

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vellux::simulator {

/// The user's steps are carried out on the main thread. At the end, also after a step that failed, it asks
/// the application to end. Failures are printed on standard error.
class DayPlayer {
public:
    DayPlayer(Script script, Dependencies dependencies)
        : m_script(std::move(script)), m_dependencies(std::move(dependencies)) {}
    /// Waits for the thread, which ends soon when the main thread runs or Changes::end() was called.
    ~DayPlayer();
    DayPlayer(const DayPlayer&) = delete;
    DayPlayer& operator=(const DayPlayer&) = delete;

    /// Starts playing; once.
    void start();
    /// Waits for the thread.
    void join();
    /// To be called when the application has ended: the player stops waiting for it.
    void applicationHasEnded();

    /// Whether all steps went as the script expects. After join().
    bool succeeded() const { return m_bSucceeded; }

private:
    // Why a step failed; absent when it did not.
    using Failure = std::optional<std::string>;

    void run();
    bool playAll();
    void quit();

    Failure play(const ConnectStep& step);
    Failure play(const DisconnectStep& step);
    Failure play(const BoxStep& step);
    Failure play(const SelectStep& step);
    Failure play(const ModeStep& step);
    Failure play(const QuitStep& step);
    Failure play(const PresenceStep& step);
    Failure play(const PlugStep& step);
    Failure play(const BatchStep& step);
    Failure play(const InterfereStep& step);
    Failure play(const DropStep& step);
    Failure play(const WaitStep& step);
    Failure play(const SleepStep& step);

    Failure onMain(std::function<Refusal(VelluxWindowUi&)> action);
    Failure waitFor(const char* strWhat, const std::function<bool()>& holds);
    Failure waitUntilConnected(std::size_t nAlertsBefore);
    Failure waitUntilNotPolling();
    /// The conditions of a wait that don't hold, in words.
    std::vector<std::string> unmet(const WaitStep& step, const LightRecord& before) const;

    const Script m_script;
    const Dependencies m_dependencies;
    bool m_bLeftConnected = false;   // manual mode was entered while connected
    std::size_t m_nAlertsBefore = 0; // alerts before the last step that was no wait
    bool m_bSucceeded = false;
    std::atomic<bool> m_bApplicationEnded{false};
    std::thread m_thread;
};

} // namespace vellux::simulator
