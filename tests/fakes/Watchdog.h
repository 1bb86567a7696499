// Turns a hang into a loud failure.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

/// Aborts the test's process unless it is destroyed within its time; generous, since machines are busy.
class Watchdog {
public:
    explicit Watchdog(const char* strWhat, std::chrono::seconds budget = std::chrono::seconds(60))
        : m_thread([this, strWhat, budget] {
              std::unique_lock lock(m_mutex);
              if (m_changed.wait_for(lock, budget, [this] { return m_bEnded; }))
                  return;
              std::fprintf(stderr, "HANG: %s\n", strWhat);
              std::abort();
          }) {}
    ~Watchdog() {
        {
            const std::lock_guard lock(m_mutex);
            m_bEnded = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_bEnded = false;
    std::thread m_thread;
};
