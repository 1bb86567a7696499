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

[[noreturn]] void endProgram(const char* strWhy) {
    std::fprintf(stderr, "vellux: %s\n", strWhy);
    std::abort();
}
} // namespace

void installPlatform(const Platform& platform) {
    if (installed())
        endProgram("a second platform was installed");
    installed().emplace(platform);
}

const Platform& platform() {
    if (!installed())
        endProgram("no platform was installed");
    return *installed();
}

void assertMainThread() {
    assertMainThread(platform().mainThread);
}

} // namespace vellux
