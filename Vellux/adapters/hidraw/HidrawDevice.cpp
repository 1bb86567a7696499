#include "adapters/hidraw/HidrawDevice.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vellux {

void CircuitBreaker::record(HidResult result, Time now) {
    m_nTimeouts = result == ETIMEDOUT ? m_nTimeouts + 1 : 0;
    m_lastResult = now;
}

HidrawDevice::HidrawDevice(HidrawEntry entry, HidrawNode node,
                           std::shared_ptr<const std::atomic<bool>> shuttingDown, Now now)
    : m_entry(std::move(entry)), m_node(node), m_shuttingDown(std::move(shuttingDown)),
      m_now(std::move(now)) {}

HidrawDevice::~HidrawDevice() {
    if (m_node.nDescriptor >= 0)
        ::close(m_node.nDescriptor);
}

HidResult HidrawDevice::send(std::uint8_t byReportID, std::span<const std::uint8_t> payload) {
    if (m_node.nDescriptor < 0)
        return m_node.nRefusal;
    // The kernel takes the report ID as the first byte, which the count includes, and keeps a 0 to itself.
    std::vector<std::uint8_t> report(payload.size() + 1);
    report[0] = byReportID;
    std::copy(payload.begin(), payload.end(), report.begin() + 1);

    ScopedLock lock(m_sending);
    if (m_breaker.isOpen(m_now(), *m_shuttingDown))
        return ETIMEDOUT;
    const ssize_t nTaken = ::write(m_node.nDescriptor, report.data(), report.size());
    HidResult result = 0;
    if (nTaken < 0)
        result = static_cast<HidResult>(errno);
    else if (static_cast<std::size_t>(nTaken) != report.size())
        result = EIO;
    m_breaker.record(result, m_now());
    return result;
}

} // namespace vellux
