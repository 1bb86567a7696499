#include "support/CallQueue.h"

namespace vellux {

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

void CallQueue::runPending() {
    for (;;) {
        std::shared_ptr<Call> call;
        {
            ScopedLock lock(m_mutex);
            if (m_calls.empty())
                return;
            call = std::move(m_calls.front());
            m_calls.pop_front();
        }
        execute(call);
    }
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
