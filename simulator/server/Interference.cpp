#include "server/Interference.h"

#include <utility>

namespace vellux::simulator {

void Interferences::add(Route route, Interference interference) {
    if (interference.nTimes < 1)
        return;
    ScopedLock lock(m_mutex);
    m_waiting[route].push_back(std::move(interference));
}

std::optional<Interference> Interferences::take(Route route) {
    ScopedLock lock(m_mutex);
    std::deque<Interference>& waiting = m_waiting[route];
    if (waiting.empty())
        return std::nullopt;
    Interference interference = waiting.front();
    if (--waiting.front().nTimes == 0)
        waiting.pop_front();
    return interference;
}

} // namespace vellux::simulator
