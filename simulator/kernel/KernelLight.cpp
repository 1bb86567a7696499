#include "kernel/KernelLight.h"

#include <utility>

namespace vellux::simulator {

std::vector<Attempt> KernelLight::attempts() const {
    const std::lock_guard lock(m_mutex);
    return m_attempts;
}

std::vector<Bytes> KernelLight::changes() const {
    std::vector<Bytes> changes;
    for (const Attempt& attempt : attempts())
        if (changes.empty() || changes.back() != attempt.report)
            changes.push_back(attempt.report);
    return changes;
}

Bytes KernelLight::shown() const {
    const std::lock_guard lock(m_mutex);
    return m_attempts.empty() ? Bytes() : m_attempts.back().report;
}

void KernelLight::forget() {
    const std::lock_guard lock(m_mutex);
    m_attempts.clear();
}

void KernelLight::log(Bytes report) {
    const std::lock_guard lock(m_mutex);
    m_attempts.push_back({std::chrono::steady_clock::now(), std::move(report)});
}

} // namespace vellux::simulator
