// The one journal of a test: what crossed the ports, in order.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

/// Lines of the form "KIND rest". Any thread writes.
class Journal {
public:
    using Lines = std::vector<std::string>;

    void add(const std::string& strLine) {
        {
            const std::lock_guard lock(m_mutex);
            m_lines.push_back(strLine);
        }
        m_changed.notify_all();
    }

    /// All lines of the given kinds, or simply all of them; the journal stays as it is.
    Lines lines(std::initializer_list<std::string_view> kinds = {}) const {
        const std::lock_guard lock(m_mutex);
        Lines result;
        for (const std::string& strLine : m_lines)
            if (kinds.size() == 0 || isOf(strLine, kinds))
                result.push_back(strLine);
        return result;
    }

    /// The same, and empties the journal.
    Lines take(std::initializer_list<std::string_view> kinds = {}) {
        Lines result = lines(kinds);
        clear();
        return result;
    }

    void clear() {
        const std::lock_guard lock(m_mutex);
        m_lines.clear();
    }

    std::size_t count(std::string_view strLine) const {
        const std::lock_guard lock(m_mutex);
        std::size_t nCount = 0;
        for (const std::string& strEach : m_lines)
            nCount += strEach == strLine ? 1 : 0;
        return nCount;
    }

    /// Waits for the next line, a few milliseconds at most: for loops that wait for a state.
    void waitForChange() {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(2));
    }

private:
    static bool isOf(const std::string& strLine, std::initializer_list<std::string_view> kinds) {
        for (const std::string_view strKind : kinds)
            if (strLine.starts_with(strKind) &&
                (strLine.size() == strKind.size() || strLine[strKind.size()] == ' '))
                return true;
        return false;
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    Lines m_lines;
};
