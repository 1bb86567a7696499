#include "adapters/linux/WakeUp.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace vellux {

WakeUp::WakeUp() : m_nDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

WakeUp::~WakeUp() {
    if (m_nDescriptor >= 0)
        ::close(m_nDescriptor);
}

void WakeUp::signal() {
    // The one failure there is, a full counter, leaves it readable, which is all that is wanted.
    static_cast<void>(::eventfd_write(m_nDescriptor, 1));
}

void WakeUp::clear() {
    eventfd_t nSignals = 0;
    static_cast<void>(::eventfd_read(m_nDescriptor, &nSignals));
}

} // namespace vellux
