#include "adapters/linux/LinuxThreads.h"

#include <algorithm>
#include <cmath>
#include <sys/resource.h>
#include <unistd.h>

namespace vellux {

namespace {
constexpr int kLowest = 19;
constexpr double kMiddle = 0.5; // the priority of a thread nobody asked about: nice 0
} // namespace

int niceValue(double dPriority, int nCurrent) {
    const double dBelowMiddle = std::clamp((kMiddle - dPriority) / kMiddle, 0.0, 1.0);
    return std::max(nCurrent, static_cast<int>(std::lround(dBelowMiddle * kLowest)));
}

void LinuxThreads::setCurrentThreadPriority(double dPriority) {
    // On Linux a nice value belongs to a thread, and PRIO_PROCESS takes a thread's ID.
    const auto nThread = static_cast<id_t>(::gettid());
    const int nCurrent = ::getpriority(PRIO_PROCESS, nThread);
    static_cast<void>(::setpriority(PRIO_PROCESS, nThread, niceValue(dPriority, nCurrent)));
}

} // namespace vellux
