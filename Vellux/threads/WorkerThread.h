// A thread with a handle that can be asked whether it still runs.
#pragma once

#include <atomic>
#include <functional>
#include <memory>

namespace vellux {

/// Runs one body on a thread of its own. The handle may be dropped at any time; the thread runs on.
class WorkerThread {
public:
    /// The highest that an ordinary thread may have. On Linux each thread has it from the start (nice 0
    /// without a privilege), so nothing is asked of the system. (kept-on-purpose:priority)
    static constexpr double kHighestPriority = 1.0;

    /// The body must not throw. The priority is a share of the highest one, from 0.0 to 1.0.
    WorkerThread(std::function<void()> body, double dPriority);

    double priority() const { return m_dPriority; }
    /// Starts the thread and returns at once; once per handle. When the platform can't create a thread, this
    /// is reported on standard error, and the handle is finished without its body having run.
    void start();

    /// Started and not yet finished. Any thread.
    bool isExecuting() const { return m_state->progress == Progress::Executing; }
    /// The body has returned. Any thread.
    bool isFinished() const { return m_state->progress == Progress::Finished; }

    /// Waits for every thread that was ever started to end. Main thread, at the very end of the program, when
    /// nothing starts a thread any more and nothing keeps one from ending.
    static void joinAll();

private:
    enum class Progress { NotStarted, Executing, Finished };
    struct State {
        std::function<void()> body;
        std::atomic<Progress> progress{Progress::NotStarted};
    };
    struct Registry;
    static Registry& registry();

    std::shared_ptr<State> m_state;
    const double m_dPriority;
};

using WorkerThreadRef = std::shared_ptr<WorkerThread>;

} // namespace vellux
