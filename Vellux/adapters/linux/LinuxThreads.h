// The thread port on Linux.
#pragma once

#include "ports/Threads.h"

namespace vellux {

/// The nice value of a priority from 0.0 to 1.0 for a thread whose nice value is `nCurrent`: 19 at 0.0, rising
/// to 0 at 0.5 and staying there, but never better than `nCurrent`. Out of range counts as the nearest end.
int niceValue(double dPriority, int nCurrent);

/// Linux schedules ordinary threads by nice value, from 19 to -20 at best; an account that was granted nothing
/// (RLIMIT_NICE 0) gets 0 at best. That is the top of the scale here for every account, root included: what
/// this program's threads do takes a millisecond now and then, and the desktop around it comes first. Nor is
/// what the user asked for when starting the program under nice(1) taken back.
class LinuxThreads : public Threads {
public:
    /// Of the calling thread alone. Never blocks.
    void setCurrentThreadPriority(double dPriority) override;
};

} // namespace vellux
