// The one journal of a test: what crossed the ports, in order.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Lines of the form "KIND rest". Any thread writes.
class Journal {
public:
    using Lines = std::vector<std::string>;
    using Kinds = std::vector<std::string_view>;

    void add(const std::string& strLine) {
        {
            const std::lock_guard lock(m_mutex);
            m_entries.push_back({strLine});
        }
        m_changed.notify_all();
    }

    /// All lines of the given kinds, or simply all of them; the journal stays as it is.
    Lines lines(const Kinds& kinds = {}) const {
        const std::lock_guard lock(m_mutex);
        return select(kinds);
    }

    /// The same, and removes them.
    Lines take(const Kinds& kinds = {}) {
        const std::lock_guard lock(m_mutex);
        Lines result = select(kinds);
        std::erase_if(m_entries, [&](const Entry& entry) { return isOf(entry, kinds); });
        return result;
    }

    /// Those of the given kinds that nobody has asked for.
    Lines unseen(const Kinds& kinds) const {
        const std::lock_guard lock(m_mutex);
        Lines result;
        for (const Entry& entry : m_entries)
            if (!entry.bSeen && isOf(entry, kinds))
                result.push_back(entry.strLine);
        return result;
    }

    void clear() {
        const std::lock_guard lock(m_mutex);
        m_entries.clear();
    }

    std::size_t count(std::string_view strLine) const {
        const std::lock_guard lock(m_mutex);
        std::size_t nCount = 0;
        for (const Entry& entry : m_entries)
            if (entry.strLine == strLine) {
                entry.bSeen = true;
                ++nCount;
            }
        return nCount;
    }

    /// Waits for the next line, a few milliseconds at most: for loops that wait for a state.
    void waitForChange() {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(2));
    }

private:
    struct Entry {
        std::string strLine;
        mutable bool bSeen = false;
    };
    static bool isOf(const Entry& entry, const Kinds& kinds) {
        return kinds.empty() || std::any_of(kinds.begin(), kinds.end(), [&](std::string_view strKind) {
                   return (entry.strLine + ' ').starts_with(std::string(strKind) + ' ');
               });
    }
    Lines select(const Kinds& kinds) const {
        Lines result;
        for (const Entry& entry : m_entries)
            if (isOf(entry, kinds)) {
                entry.bSeen = true;
                result.push_back(entry.strLine);
            }
        return result;
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Entry> m_entries;
};
