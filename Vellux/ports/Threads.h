// What the modules ask of the platform's threads beyond the language's own.
#pragma once

namespace vellux {

class Threads {
public:
    virtual ~Threads() = default;

    /// Sets the calling thread's priority on a scale from 0.0 to 1.0; 1.0 is the highest that the platform
    /// grants an ordinary thread. A refusal is ignored.
    virtual void setCurrentThreadPriority(double dPriority) = 0;
};

} // namespace vellux
