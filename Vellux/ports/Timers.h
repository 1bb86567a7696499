// What the modules ask of a toolkit's timers.
#pragma once

#include "threads/MainThread.h"

#include <chrono>
#include <functional>
#include <memory>

namespace vellux {

/// A call that is yet to come; dropping it cancels the call.
using TimerRef = std::shared_ptr<void>;

/// Main thread only.
class Timers {
public:
    virtual ~Timers() = default;

    /// Makes the call once, from the main thread's loop, after the time has passed on a clock that does not
    /// jump and stands still while the system sleeps. Never null.
    [[nodiscard]] virtual TimerRef callAfter(std::chrono::milliseconds delay, std::function<void()> call)
        VELLUX_REQUIRES(mainThreadRole) = 0;
};

} // namespace vellux
