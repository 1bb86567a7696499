// Time in the test's hands.
#pragma once

#include "fakes/Journal.h"
#include "ports/Clock.h"

#include <atomic>
#include <cstdio>
#include <thread>

/// Journals each sleep as "sleep SECONDS" (all digits that count). Sleeps take no time, but for those of a
/// flashing worker (its half periods, on any thread but main's): they end when the test says so.
class FakeClock : public vellux::Clock {
public:
    explicit FakeClock(Journal& journal) : m_journal(journal) {}

    // ---- what tests do ----

    /// Whether the driver's 10 ms pauses and the 10 ms polls for a worker's end are journalled. Off at first.
    bool bJournalShortSleeps = false;

    /// Lets workers run through `nHalves` half periods and waits until they have entered the next one.
    void passHalves(int nHalves) {
        std::unique_lock lock(m_mutex);
        for (int n = 0; n < nHalves; ++n) {
            m_changed.wait(lock, [this] { return m_nSleepers > 0 || m_bFree; });
            if (m_bFree)
                return;
            const int nEntered = m_nEntered;
            ++m_nTickets;
            m_changed.notify_all();
            m_changed.wait_for(lock, std::chrono::seconds(20), [&] { return m_nEntered > nEntered; });
        }
    }
    /// Lets workers run as they like from now on; for letting them end.
    void letRun() {
        const std::lock_guard lock(m_mutex);
        m_bFree = true;
        m_changed.notify_all();
    }
    /// Holds the workers' half periods again.
    void hold() {
        const std::lock_guard lock(m_mutex);
        m_bFree = false;
    }

    /// The time of day, which only tests change.
    std::atomic<std::chrono::system_clock::time_point> timeOfDay{
        std::chrono::system_clock::time_point(std::chrono::hours(24 * 365 * 40))};

    // ---- the port ----

    std::chrono::system_clock::time_point now() override { return timeOfDay; }

    void sleep(vellux::Seconds duration) override {
        const bool bShort = duration <= vellux::Seconds(0.01) && duration > vellux::Seconds(0);
        if (!bShort || bJournalShortSleeps) {
            char text[64];
            std::snprintf(text, sizeof text, "sleep %.17g", duration.count());
            m_journal.add(text);
        }
        if (std::this_thread::get_id() == m_mainThread || bShort) {
            std::this_thread::sleep_for(std::chrono::microseconds(bShort ? 100 : 0));
            return;
        }
        std::unique_lock lock(m_mutex);
        ++m_nEntered;
        ++m_nSleepers;
        m_changed.notify_all();
        if (m_bFree) {
            lock.unlock();
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            lock.lock();
        }
        m_changed.wait(lock, [this] { return m_nTickets > 0 || m_bFree; });
        if (m_nTickets > 0)
            --m_nTickets;
        --m_nSleepers;
    }

private:
    Journal& m_journal;
    const std::thread::id m_mainThread = std::this_thread::get_id();
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_nTickets = 0;
    int m_nSleepers = 0;
    int m_nEntered = 0;
    bool m_bFree = false;
};
