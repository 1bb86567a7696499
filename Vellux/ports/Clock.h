// What the modules ask of time.
#pragma once

#include <chrono>

namespace vellux {

/// Seconds as a double: the flash periods are single-precision values widened to double.
using Seconds = std::chrono::duration<double>;

class Clock {
public:
    virtual ~Clock() = default;

    /// Blocks the calling thread for the given time; zero or less only yields.
    virtual void sleep(Seconds duration) = 0;
    /// The time of day, which may jump: for people to read, never to measure by. Any thread.
    virtual std::chrono::system_clock::time_point now() = 0;
};

} // namespace vellux
