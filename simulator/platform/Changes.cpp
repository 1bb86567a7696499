#include "platform/Changes.h"

namespace vellux::simulator {

void Changes::notify() {
    {
        ScopedLock lock(m_mutex);
        ++m_nChanges;
        m_changed.notify_all();
    }
    m_observers.notify();
}

void Changes::end() {
    ScopedLock lock(m_mutex);
    m_bEnded = true;
    m_changed.notify_all();
}

bool Changes::hasEnded() const {
    ScopedLock lock(m_mutex);
    return m_bEnded;
}

bool Changes::waitUntil(const std::function<bool()>& holds, std::chrono::milliseconds limit) const {
    const auto end = std::chrono::steady_clock::now() + limit;
    for (;;) {
        std::uint64_t nSeen = 0;
        {
            ScopedLock lock(m_mutex);
            nSeen = m_nChanges; // a change during the try below is not missed
        }
        if (holds())
            return true;
        ScopedLock lock(m_mutex);
        while (m_nChanges == nSeen && !m_bEnded)
            if (m_changed.wait_until(m_mutex, end) == std::cv_status::timeout && m_nChanges == nSeen)
                return false;
        if (m_bEnded)
            return false;
    }
}

} // namespace vellux::simulator
