#include "adapters/linux/SystemClock.h"

#include <algorithm>
#include <thread>

namespace vellux {

void SystemClock::sleep(Seconds duration) {
    constexpr Seconds kLongest = std::chrono::hours(24); // what follows must fit the kernel's integers
    if (duration > Seconds::zero())
        std::this_thread::sleep_for(std::min(duration, kLongest));
    else
        std::this_thread::yield();
}

} // namespace vellux
