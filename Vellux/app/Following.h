// Whether the presence is followed, and if not, why: one state for window, tray, notification and scripts.
#pragma once

#include "model/ViewState.h"
#include "threads/CoalescedUpdate.h"
#include "threads/MainThread.h"
#include "threads/Observable.h"

#include <vector>

class VelluxHttp;
class VelluxWindowUi;

namespace vellux {

struct FollowingState {
    enum class Phase {
        Manual,       ///< the user sets the light; nothing is said about a connection
        NotConnected, ///< signIn tells whether a sign-in has failed
        Connecting,   ///< signIn has the step
        Following,    ///< signIn has the user and the server
        NotReached,   ///< channel has the time
        Ended,        ///< channel has the reason
    };
    Phase phase = Phase::NotConnected;
    SignInStatus signIn;
    ChannelStatus channel;
    bool bOnCall = false;
    /// The following was lost and nobody has done anything about it: from NotReached or Ended on, through all
    /// attempts of the program's own, until the presence is followed again or the user acts.
    bool bLost = false;

    bool operator==(const FollowingState&) const = default;
};

/// Keeps the state; it is written on the main thread, soon after what it is made from has changed.
class Following {
public:
    /// Main thread. All of these outlive it.
    Following(MainThread& mainThread, VelluxWindowUi& controller, VelluxHttp& client);
    Following(const Following&) = delete;
    Following& operator=(const Following&) = delete;

    Observable<FollowingState>& state() { return m_state; }

private:
    void update();

    VelluxWindowUi& m_controller;
    VelluxHttp& m_client;
    Observable<FollowingState> m_state;
    CoalescedUpdate m_update;
    std::vector<Observation> m_observations;
};

} // namespace vellux
