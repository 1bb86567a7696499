// Ctrl-C and the request to end, taken as an orderly end.
#pragma once

#include <functional>
#include <thread>

namespace vellux::simulator {

/// Catches SIGINT and SIGTERM for as long as it lives. To be made before any other thread: threads inherit
/// that these signals are blocked.
class InterruptWatch {
public:
    /// `interrupted` is called on a thread of the watch, once at most.
    explicit InterruptWatch(std::function<void()> interrupted);
    /// Waits for that thread.
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

private:
    const int m_nSignals; // file descriptor that reads the signals
    const int m_nEnd;     // file descriptor that ends the thread
    std::thread m_thread;
};

} // namespace vellux::simulator
