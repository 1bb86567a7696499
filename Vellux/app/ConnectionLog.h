// The latest exchanges with the server, for people who want to know why it does not connect.
#pragma once

#include "ports/HttpExchange.h"
#include "threads/Observers.h"
#include "threads/Shared.h"

#include <optional>
#include <string>
#include <vector>

namespace vellux {

/// A log of exchanges, in memory only. Any thread; blocks only for the length of a copy. It decides nothing.
class ConnectionLog {
public:
    static constexpr std::size_t kMostEntries = 100;

    /// One exchange, or equal failures in a row.
    struct Entry {
        HttpExchange exchange; ///< the latest of them
        int nCount = 1;
    };

    ConnectionLog() = default;
    ConnectionLog(const ConnectionLog&) = delete;
    ConnectionLog& operator=(const ConnectionLog&) = delete;

    /// Adds an exchange. One that went wrong like the latest entry (same method, host, path, status and
    /// failure) becomes part of it. Beyond the most entries the oldest goes.
    void add(const HttpExchange& exchange);

    /// Oldest first.
    std::vector<Entry> entries() const;

    /// The latest exchange that failed or was refused with a status of 400 or above, as long as that still
    /// tells why it does not connect: absent when a later exchange shows that it is over.
    std::optional<HttpExchange> lastFailure() const;

    /// All entries as plain text, oldest first, a line for each with "\n" behind it: time with the offset
    /// from UTC, method, host and path, status, milliseconds, what the answer said, failure and count. ""
    /// when there are none. Holds nothing that an HttpExchange does not.
    std::string text() const;

    /// Calls the observer after every addition, on the thread that added, which it must not block.
    [[nodiscard]] Observation observe(Observers<>::Observer observer) {
        return m_observers.add(std::move(observer));
    }

private:
    Shared<std::vector<Entry>> m_entries;
    Observers<> m_observers;
};

/// The usual end of a poll that had nothing to tell. Any thread.
[[nodiscard]] bool isIdlePoll(const HttpExchange& exchange);

/// A failure in plain words, such as "name not found". Any thread.
[[nodiscard]] const char* nameOf(HttpFailure failure);

} // namespace vellux
