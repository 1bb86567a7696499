// The event channel of one registered application: batches in the order of their numbers, polls held for
// news.
#pragma once

#include "server/Reply.h"
#include "threads/Mutex.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vellux::simulator {

/// Any thread. Each poll names the batch that it asks for; a batch that was sent already, but perhaps never
/// arrived, is sent again when it is asked for again.
class EventChannel {
public:
    /// `holdChanged` is called, with no lock held, whenever a poll has begun or ceased to be held.
    EventChannel(std::string strApplicationPath, std::chrono::milliseconds holdLimit,
                 std::function<void()> holdChanged);

    /// Answers a poll: at once when there is news, else when there is some. Blocks for as long as the poll is
    /// held: until news, a newer poll, close(), the hold limit (then it ends with a link to the next poll),
    /// or until the client on the other end of `nSocket` is gone.
    Reply poll(std::int64_t nAck, int nSocket);

    /// The user's presence has changed. Several changes between two polls are one event.
    void tellPresence();
    /// Sends a reply of any kind in place of the next batch.
    void emit(Reply reply);
    /// Breaks the connection of the poll that is held now.
    void cutHold();
    /// Ends the held poll and all later ones, without an answer.
    void close();

    /// Whether a poll is held now.
    bool isHeld() const;
    /// The path of the poll that follows the next batch.
    std::string hrefAfterNextBatch() const;

private:
    class Hold;

    /// The path of a poll.
    std::string href(std::int64_t nAck) const;
    std::optional<Reply> takeNews() VELLUX_REQUIRES(m_mutex);
    Reply record(Reply reply) VELLUX_REQUIRES(m_mutex);
    bool release(Reply reply) VELLUX_REQUIRES(m_mutex);
    void deliver();

    const std::string m_strApplicationPath;
    const std::chrono::milliseconds m_holdLimit;
    const std::function<void()> m_holdChanged;

    mutable Mutex m_mutex;
    std::shared_ptr<Hold> m_hold VELLUX_GUARDED_BY(m_mutex);     // the poll that is held; null: none
    std::int64_t m_nAnswered VELLUX_GUARDED_BY(m_mutex) = 0;     // number of the batch sent last
    std::optional<Reply> m_lastBatch VELLUX_GUARDED_BY(m_mutex); // that batch
    std::deque<Reply> m_emitted VELLUX_GUARDED_BY(m_mutex);
    bool m_bFirstToCome VELLUX_GUARDED_BY(m_mutex) = true;
    bool m_bPresenceNews VELLUX_GUARDED_BY(m_mutex) = false;
    bool m_bClosed VELLUX_GUARDED_BY(m_mutex) = false;
};

} // namespace vellux::simulator
