// When the user is told, without looking, that the presence is no longer followed.
#pragma once

#include "app/Choices.h"
#include "app/Following.h"
#include "ports/Timers.h"
#include "threads/MainThread.h"
#include "threads/Observable.h"

#include <chrono>
#include <functional>

namespace vellux {

/// Shows one notice per loss: at once when the following has ended for good, after kPatience as long as the
/// program still tries, and another one if it then gives up. Withdrawn when the presence is followed again or
/// the user acts. Main thread only.
class LossNotice {
public:
    static constexpr std::chrono::minutes kPatience{1};

    /// The references outlive it. It calls neither function in its constructor or destructor.
    struct Dependencies {
        MainThread& mainThread;
        Timers& timers;
        Following& following;
        Observable<Choices>& choices;
        std::function<void(const FollowingState&)> show; ///< in place of the notice shown before, if any
        std::function<void()> withdraw;
    };
    explicit LossNotice(Dependencies dependencies);
    LossNotice(const LossNotice&) = delete;
    LossNotice& operator=(const LossNotice&) = delete;

private:
    enum class Told { Nothing, StillTrying, GivenUp };
    void update() VELLUX_REQUIRES(mainThreadRole);
    void tell(Told what);

    const Dependencies m_dependencies;
    TimerRef m_due;
    Told m_told = Told::Nothing;
    CoalescedUpdate m_update;
    Observation m_observations[2];
};

} // namespace vellux
