// Requests to end that come as signals, taken as an orderly end.
#pragma once

#include <functional>
#include <memory>
#include <thread>

namespace vellux {

/// From now on SIGTERM, SIGINT and SIGHUP are requests to end, for as long as the process lives; one that is
/// ignored, as under nohup, stays so. Until there is a TerminationWatch nothing is lit and nothing has
/// changed, so the first ends the process at once, with status 0, whatever it waits for. From then on what
/// comes within 2 s of the first is the same request: a session's end sends SIGTERM and SIGHUP, a terminal
/// that closes SIGHUP twice. After that a SIGHUP still is; SIGTERM or SIGINT end the process at once, with
/// 128 and their number as the status. No signal is blocked, so programs that are started by this one get
/// them as ever. To be called first in main(); again does nothing.
void catchTerminationSignals();

/// Whether a request has come since catchTerminationSignals(). Any thread.
bool isTerminationRequested();

/// The thread that acts on such a request, once there is something to put in order. One process has one of
/// these.
class TerminationWatch {
public:
    /// `requested` is called once at most, on the watch's thread: it comes also while the main thread is
    /// busy. Catches the signals first if that has not been done. Null when the platform gives no thread.
    static std::unique_ptr<TerminationWatch> start(std::function<void()> requested);
    /// Waits for that thread. The program is about to end: the signals stay caught.
    ~TerminationWatch();
    TerminationWatch(const TerminationWatch&) = delete;
    TerminationWatch& operator=(const TerminationWatch&) = delete;

private:
    TerminationWatch() = default;

    std::thread m_thread;
};

} // namespace vellux
