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

std::function<void()> CoalescedUpdate::asker() const {
    return [link = m_link, &mainThread = m_mainThread] { ask(mainThread, link); };
}

void CoalescedUpdate::ask(MainThread& mainThread, const std::shared_ptr<Link>& link) {
    if (mainThread.isCurrent()) {
        assertMainThread(mainThread);
        if (link->refresh)
            link->refresh();
        return;
    }
    if (link->bQueued.exchange(true))
        return;
    mainThread.post([link, &mainThread] {
        assertMainThread(mainThread);
        link->bQueued = false; // first, so that a change during the refresh asks again
        if (link->refresh)
            link->refresh();
    });
}

} // namespace vellux
