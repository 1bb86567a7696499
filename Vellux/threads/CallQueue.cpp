#include "threads/CallQueue.h"

#include <chrono>

namespace vellux {

namespace {

constexpr std::chrono::milliseconds kLongestTurn(50);

} // namespace

struct CallQueue::Call {
    std::function<void()> function;
    bool bDone = false; // guarded by the queue's mutex
};

CallQueue::CallQueue(std::function<void()> wake) : m_wake(std::move(wake)) {}

CallQueue::~CallQueue() {
    close();
}

bool CallQueue::isCurrent() const {
    return std::this_thread::get_id() == m_mainThread;
}

bool CallQueue::enqueue(std::shared_ptr<Call> call) {
    {
        ScopedLock lock(m_mutex);
        if (m_bClosed)
            return false;
        m_calls.push_back(std::move(call));
        m_changed.notify_all();
    }
    if (m_wake)
        m_wake();
    return true;
}

void CallQueue::post(std::function<void()> call) {
    auto entry = std::make_shared<Call>();
    entry->function = std::move(call);
    enqueue(std::move(entry));
}

bool CallQueue::runAndWait(std::function<void()> call) {
    if (isCurrent()) {
        call();
        return true;
    }
    auto entry = std::make_shared<Call>();
    entry->function = std::move(call);
    if (!enqueue(entry))
        return false;
    ScopedLock lock(m_mutex);
    while (!entry->bDone && !m_bClosed)
        m_changed.wait(m_mutex);
    return entry->bDone;
}

void CallQueue::execute(const std::shared_ptr<Call>& call) {
    call->function();
    ScopedLock lock(m_mutex);
    call->bDone = true;
    m_changed.notify_all();
}

// Takes one call off the queue and runs it, if it is one of the first `nLast` that were ever queued.
bool CallQueue::runNext(std::uint64_t nLast) {
    std::shared_ptr<Call> call;
    bool bOthersWait = false;
    {
        ScopedLock lock(m_mutex);
        if (m_calls.empty() || m_nTaken >= nLast)
            return false;
        call = std::move(m_calls.front());
        m_calls.pop_front();
        ++m_nTaken;
        bOthersWait = !m_calls.empty();
    }
    if (bOthersWait && m_wake) // now, since the call may run a loop of its own
        m_wake();
    execute(call);
    return true;
}

bool CallQueue::runPending() {
    const auto end = std::chrono::steady_clock::now() + kLongestTurn;
    std::uint64_t nLast = 0; // a sequence number, since loops inside calls take calls off, too
    {
        ScopedLock lock(m_mutex);
        nLast = m_nTaken + m_calls.size();
    }
    while (runNext(nLast) && std::chrono::steady_clock::now() < end) {
    }
    ScopedLock lock(m_mutex);
    return !m_calls.empty();
}

void CallQueue::run() {
    for (;;) {
        {
            ScopedLock lock(m_mutex);
            while (m_calls.empty() && !m_bClosed)
                m_changed.wait(m_mutex);
            if (m_bClosed)
                return;
        }
        runPending();
    }
}

void CallQueue::close() {
    std::deque<std::shared_ptr<Call>> dropped; // destroyed with no lock held
    ScopedLock lock(m_mutex);
    m_bClosed = true;
    dropped.swap(m_calls);
    m_changed.notify_all();
}

} // namespace vellux
