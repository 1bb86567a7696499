// Signs in again by itself, if the user has chosen so.
#pragma once

#include "app/Choices.h"
#include "app/Following.h"
#include "ports/Timers.h"
#include "threads/MainThread.h"
#include "threads/Observable.h"

#include <chrono>
#include <functional>

class VelluxWindowUi;

namespace vellux {

/// Attempts a sign-in when the following has ended or a sign-in has failed: after kFirstDelay, then twice as
/// long each time, up to kLongestDelay. A refused password, Disconnect and manual mode end the attempts; so
/// does a press on Connect. While polls are merely retried it waits. Main thread only.
class Reconnector {
public:
    static constexpr std::chrono::seconds kFirstDelay{2};
    static constexpr std::chrono::minutes kLongestDelay{5};
    /// A following that lasted so long starts the delays from the first again.
    static constexpr std::chrono::minutes kSettled{1};

    /// All of these outlive it.
    struct Dependencies {
        MainThread& mainThread;
        Timers& timers;
        VelluxWindowUi& controller;
        Following& following;
        Observable<Choices>& choices;
        /// What each delay is multiplied by, 0.8 to 1.2, so that the users of a server that was away don't
        /// all come back at once.
        std::function<double()> jitter = randomJitter;
    };
    explicit Reconnector(const Dependencies& dependencies);
    Reconnector(const Reconnector&) = delete;
    Reconnector& operator=(const Reconnector&) = delete;

    /// The computer has woken up, or the network is back: an attempt that is due later is made at once, but
    /// none sooner than kFirstDelay after the one before; should one that is under way fail, the next is made
    /// soon.
    void hurry();

private:
    static double randomJitter();
    void update() VELLUX_REQUIRES(mainThreadRole);
    void plan() VELLUX_REQUIRES(mainThreadRole);
    void attempt() VELLUX_REQUIRES(mainThreadRole);
    void forget();

    const Dependencies m_dependencies;
    std::chrono::milliseconds m_delay{kFirstDelay};
    TimerRef m_due;     // the next attempt
    TimerRef m_rest;    // the time after an attempt in which there is no other
    TimerRef m_settled; // the following has lasted
    bool m_bHurried = false;
    CoalescedUpdate m_update;
    Observation m_observations[3];
};

} // namespace vellux
