// Threads without priorities.
#pragma once

#include "ports/Threads.h"

namespace vellux::simulator {

/// All threads are alike: what is simulated must not depend on who is preferred.
class EqualThreads : public Threads {
public:
    void setCurrentThreadPriority(double) override {}
};

} // namespace vellux::simulator
