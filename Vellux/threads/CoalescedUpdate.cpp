#include "threads/CoalescedUpdate.h"


#include <utility>

namespace vellux {

CoalescedUpdate::CoalescedUpdate(MainThread& mainThread, std::function<void()> refresh)
    : m_mainThread(mainThread), m_link(std::make_shared<Link>()) {
    m_link->refresh = std::move(refresh);
}

CoalescedUpdate::~CoalescedUpdate() {
    m_link->refresh = nullptr;
}

void CoalescedUpdate::ask() {
    if (m_mainThread.isCurrent()) {
        assertMainThread(m_mainThread);
        m_link->refresh();
        return;
    }
    if (m_link->bQueued.exchange(true))
        return;
    m_mainThread.post([link = m_link, &mainThread = m_mainThread] {
        assertMainThread(mainThread);
        link->bQueued = false; // first, so that a change during the refresh asks again
        if (link->refresh)
            link->refresh();
    });
}

} // namespace vellux
