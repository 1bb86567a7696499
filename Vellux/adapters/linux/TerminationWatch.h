// Requests to end that come as signals, taken as an orderly end.
#pragma once

#include <functional>
#include <thread>

namespace vellux {

/// Catches SIGTERM, SIGINT and SIGHUP for as long as it lives; one that is ignored, as under nohup, stays so. The
/// first leads to an orderly end; a second ends the process at once, with 128 and its number as the status. One
/// process has one of these. Programs that are started by this one get the signals as ever.
class TerminationWatch {
public:
    /// `requested` is called once at most, on a thread of the watch: it comes also while the main thread is busy.
    explicit TerminationWatch(std::function<void()> requested);
    /// Waits for that thread.
    ~TerminationWatch();
    TerminationWatch(const TerminationWatch&) = delete;
    TerminationWatch& operator=(const TerminationWatch&) = delete;

private:
    std::thread m_thread;
};

} // namespace vellux
