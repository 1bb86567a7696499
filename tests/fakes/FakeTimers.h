// Timers in the test's hands.
#pragma once

#include "ports/Timers.h"

#include <algorithm>
#include <memory>
#include <vector>

/// Time passes only when the test says so. Main thread.
class FakeTimers : public vellux::Timers {
public:
    /// Makes the calls that are due within the time, in their order.
    void pass(std::chrono::milliseconds time) {
        const auto end = m_now + time;
        while (const auto next = earliest(end)) {
            m_now = next->due;
            std::exchange(next->call, nullptr)();
        }
        m_now = end;
    }
    /// How long until the next call; absent when none is to come.
    std::optional<std::chrono::milliseconds> untilNext() {
        const auto next = earliest(std::chrono::milliseconds::max());
        return next ? std::optional(next->due - m_now) : std::nullopt;
    }

    vellux::TimerRef callAfter(std::chrono::milliseconds delay, std::function<void()> call) override {
        auto entry = std::make_shared<Entry>(Entry{m_now + delay, std::move(call)});
        m_entries.push_back(entry);
        return entry;
    }

private:
    struct Entry {
        std::chrono::milliseconds due;
        std::function<void()> call;
    };
    std::shared_ptr<Entry> earliest(std::chrono::milliseconds end) {
        std::shared_ptr<Entry> found;
        for (const auto& each : m_entries)
            if (const auto entry = each.lock(); entry && entry->call && entry->due <= end)
                if (!found || entry->due < found->due)
                    found = entry;
        return found;
    }

    std::chrono::milliseconds m_now{0};
    std::vector<std::weak_ptr<Entry>> m_entries;
};
