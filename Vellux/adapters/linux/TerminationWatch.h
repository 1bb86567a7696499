// Signals that ask the program to end, turned into an orderly end.
#pragma once

#include <functional>
#include <memory>
#include <thread>

namespace vellux {

/// Turns SIGTERM, SIGINT and SIGHUP into requests to end, for the rest of the process; a signal that is
/// ignored, as under nohup, stays ignored. Until there is a TerminationWatch nothing is lit and nothing has
/// changed, so the first signal ends the process at once, with status 0, whatever it waits for. From then on
/// signals within 2 s of the first belong to the same request: the end of a session sends SIGTERM and SIGHUP,
/// a closing terminal SIGHUP twice. After that SIGHUP does nothing more, and SIGTERM and SIGINT end the
/// process at once, with 128 plus their number as the status. No signal is blocked, so programs started by
/// this one receive them as usual. Called first in main(); a second call does nothing.
void catchTerminationSignals();

/// Whether a request has come since catchTerminationSignals(). Any thread.
bool isTerminationRequested();

/// The thread that acts on such a request, once there is something to shut down. One per process.
class TerminationWatch {
public:
    /// `requested` is called at most once, on the watch's thread, even while the main thread is busy. Catches
    /// the signals first if that has not been done. Null when no thread can be created.
    [[nodiscard]] static std::unique_ptr<TerminationWatch> start(std::function<void()> requested);
    /// Waits for that thread. The program is about to end: the signals stay caught.
    ~TerminationWatch();
    TerminationWatch(const TerminationWatch&) = delete;
    TerminationWatch& operator=(const TerminationWatch&) = delete;

private:
    TerminationWatch() = default;

    std::thread m_thread;
};

} // namespace vellux
