// A thread with a handle that can be asked whether it still runs.
#pragma once

#include <atomic>
#include <functional>
#include <memory>

namespace vellux {

/// Runs one body on a thread of its own. The handle may be dropped at any time; the thread runs on.
class WorkerThread {
public:
    /// The body must not throw.
    explicit WorkerThread(std::function<void()> body);

    /// 0.0 to 1.0, applied by the thread itself as it starts; before start() only.
    void setPriority(double dPriority) { m_dPriority = dPriority; }
    /// Starts the thread and returns at once; once per handle. When the platform can't make a thread, it
    /// says so on standard error, and the handle is finished without its body having run.
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
    double m_dPriority = 0.5; // the platform's middle, as for a thread nobody asked about
};

using WorkerThreadRef = std::shared_ptr<WorkerThread>;

} // namespace vellux
