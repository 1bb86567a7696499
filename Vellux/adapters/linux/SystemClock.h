// The clock port on the system's clocks.
#pragma once

#include "ports/Clock.h"

namespace vellux {

/// Sleeps for real. Any thread.
class SystemClock : public Clock {
public:
    /// At least the given time, but a day at most. Signals do not cut it short.
    void sleep(Seconds duration) override;
    std::chrono::system_clock::time_point now() override { return std::chrono::system_clock::now(); }
};

} // namespace vellux
