#include "threads/MainThread.h"

#include <cstdio>
#include <cstdlib>

namespace vellux {

void assertMainThread(const MainThread& mainThread) {
    if (mainThread.isCurrent())
        return;
    std::fputs("vellux: an operation of the main thread was called on another thread\n", stderr);
    std::abort();
}

} // namespace vellux
