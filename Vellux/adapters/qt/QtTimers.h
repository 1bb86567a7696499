// Timers on Qt's loop.
#pragma once

#include "ports/Timers.h"

namespace vellux {

/// Main thread, once the application object exists. No timer runs unless a call is to come.
class QtTimers : public Timers {
public:
    TimerRef callAfter(std::chrono::milliseconds delay, std::function<void()> call) override;
};

} // namespace vellux
