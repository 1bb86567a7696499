// Switches the light off while nobody knows whether its colour is true, if the user has chosen so.
#pragma once

#include "app/Choices.h"
#include "app/Following.h"
#include "ports/Timers.h"
#include "threads/MainThread.h"
#include "threads/Observable.h"

#include <chrono>

class VelluxWindowUi;

namespace vellux {

/// Off when the server has not been reached for longer than kPatience, by polls or by the program's own
/// sign-ins; when it is reached again the light shows the presence that was read last. Main thread only.
class UnreachedLight {
public:
    static constexpr std::chrono::minutes kPatience{1};

    /// All of these outlive it.
    struct Dependencies {
        MainThread& mainThread;
        Timers& timers;
        VelluxWindowUi& controller;
        Following& following;
        Observable<Choices>& choices;
    };
    explicit UnreachedLight(const Dependencies& dependencies);
    UnreachedLight(const UnreachedLight&) = delete;
    UnreachedLight& operator=(const UnreachedLight&) = delete;

private:
    void update() VELLUX_REQUIRES(mainThreadRole);

    const Dependencies m_dependencies;
    TimerRef m_due;    // to switch the light off
    TimerRef m_return; // to show the presence again, outside of what has noticed the answer
    bool m_bOff = false;
    CoalescedUpdate m_update;
    Observation m_observations[2];
};

} // namespace vellux
