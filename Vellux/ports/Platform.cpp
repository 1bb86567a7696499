#include "ports/Platform.h"

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace vellux {

namespace {
// Written once, before any thread is started, and only read from then on. Trivially destructible content,
// so a worker that outlives main's statics still reads a valid object.
std::optional<Platform>& installed() {
    static std::optional<Platform> instance;
    return instance;
}
} // namespace

void installPlatform(const Platform& platform) {
    installed().emplace(platform);
}

const Platform& platform() {
    return *installed();
}

void assertMainThread() {
    assertMainThread(platform().mainThread);
}

void assertMainThread(const MainThread& mainThread) {
    if (mainThread.isCurrent())
        return;
    std::fputs("vellux: an operation of the main thread was called on another thread\n", stderr);
    std::abort();
}

} // namespace vellux
