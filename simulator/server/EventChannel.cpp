#include "server/EventChannel.h"

#include "adapters/linux/WakeUp.h"
#include "server/Bodies.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace vellux::simulator {

// One held poll. Its reply is set, under the channel's mutex, by whoever ends it.
class EventChannel::Hold {
public:
    enum class End { Released, TimeLimit, ClientGone };

    std::optional<Reply> reply;

    void wake() { m_wake.signal(); }

    End wait(int nSocket, std::chrono::milliseconds limit) const {
        constexpr std::int64_t kLongest = std::numeric_limits<int>::max();
        std::array<pollfd, 2> waiting = {{{m_wake.descriptor(), POLLIN, 0}, {nSocket, POLLRDHUP, 0}}};
        const int nReady = ::poll(waiting.data(), waiting.size(),
                                  static_cast<int>(std::min<std::int64_t>(limit.count(), kLongest)));
        if (waiting[0].revents != 0)
            return End::Released;
        return nReady == 0 ? End::TimeLimit : End::ClientGone;
    }

private:
    WakeUp m_wake;
};

EventChannel::EventChannel(std::string strApplicationPath, std::chrono::milliseconds holdLimit,
                           std::function<void()> holdChanged)
    : m_strApplicationPath(std::move(strApplicationPath)), m_holdLimit(holdLimit),
      m_holdChanged(std::move(holdChanged)) {}

std::string EventChannel::href(std::int64_t nAck) const {
    return m_strApplicationPath + "/events?ack=" + std::to_string(nAck);
}

Reply EventChannel::record(Reply reply) {
    ++m_nAnswered;
    m_lastBatch = std::move(reply);
    return *m_lastBatch;
}

std::optional<Reply> EventChannel::takeNews() {
    const std::int64_t nAck = m_nAnswered + 1;
    Reply reply;
    if (m_bFirstToCome) { // its batch contains the presence, too
        m_bFirstToCome = false;
        m_bPresenceNews = false;
        reply.strBody = firstBatchBody(m_strApplicationPath, nAck);
    } else if (!m_emitted.empty()) {
        reply = std::move(m_emitted.front());
        m_emitted.pop_front();
    } else if (m_bPresenceNews) {
        m_bPresenceNews = false;
        reply.strBody = presenceBatchBody(m_strApplicationPath, nAck);
    } else {
        return std::nullopt;
    }
    return record(std::move(reply));
}

// Ends the held poll; false when there is none.
bool EventChannel::release(Reply reply) {
    if (m_hold == nullptr)
        return false;
    m_hold->reply = std::move(reply);
    m_hold->wake();
    m_hold.reset();
    return true;
}

Reply EventChannel::poll(std::int64_t nAck, int nSocket) {
    std::shared_ptr<Hold> hold;
    {
        ScopedLock lock(m_mutex);
        if (m_bClosed)
            return Reply::cut();
        Reply replaced;
        replaced.nStatus = 409;
        replaced.strBody = pollReplacedBody();
        release(std::move(replaced));
        if (nAck == m_nAnswered && m_lastBatch)
            return *m_lastBatch;
        if (nAck != m_nAnswered + 1) {
            Reply reply;
            reply.strBody = resyncBody(href(m_nAnswered + 1));
            return reply;
        }
        if (std::optional<Reply> news = takeNews())
            return std::move(*news);
        hold = std::make_shared<Hold>();
        m_hold = hold;
    }
    m_holdChanged();
    const Hold::End end = hold->wait(nSocket, m_holdLimit);
    Reply reply;
    {
        ScopedLock lock(m_mutex);
        if (m_hold == hold)
            m_hold.reset();
        if (hold->reply) // also when that came in the last moment
            reply = std::move(*hold->reply);
        else if (end == Hold::End::TimeLimit) {
            reply.strBody = nextOnlyBody(href(nAck + 1));
            record(reply);
        } else
            reply = Reply::cut();
    }
    m_holdChanged();
    return reply;
}

// Hands news that there is to the held poll, if there is one; else it waits for the next.
void EventChannel::deliver() {
    {
        ScopedLock lock(m_mutex);
        if (m_hold == nullptr)
            return;
        std::optional<Reply> news = takeNews();
        if (!news)
            return;
        release(std::move(*news));
    }
    m_holdChanged();
}

void EventChannel::tellPresence() {
    {
        ScopedLock lock(m_mutex);
        m_bPresenceNews = true;
    }
    deliver();
}

void EventChannel::emit(Reply reply) {
    {
        ScopedLock lock(m_mutex);
        m_emitted.push_back(std::move(reply));
    }
    deliver();
}

void EventChannel::cutHold() {
    {
        ScopedLock lock(m_mutex);
        if (!release(Reply::cut()))
            return;
    }
    m_holdChanged();
}

void EventChannel::close() {
    {
        ScopedLock lock(m_mutex);
        m_bClosed = true;
    }
    cutHold();
}

bool EventChannel::isHeld() const {
    ScopedLock lock(m_mutex);
    return m_hold != nullptr;
}

std::string EventChannel::hrefAfterNextBatch() const {
    ScopedLock lock(m_mutex);
    return href(m_nAnswered + 2);
}

} // namespace vellux::simulator
