// The clock port on the system's steady clock.
#pragma once

#include "ports/Clock.h"

namespace vellux {

/// Sleeps for real. Any thread.
class SystemClock : public Clock {
public:
    /// At least the given time, but a day at most. Signals do not cut it short.
    void sleep(Seconds duration) override;
};

} // namespace vellux
