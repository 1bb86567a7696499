#include "adapters/linux/Resources.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <latch>
#include <system_error>
#include <thread>
#include <vector>

namespace vellux {

namespace {

constexpr int kDescriptors = 32;
constexpr int kThreads = 8;

bool hasDescriptors() {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    int nFree = 0;
    for (int n = 0; static_cast<rlim_t>(n) < limit.rlim_cur && nFree < kDescriptors; ++n)
        nFree += ::fcntl(n, F_GETFD) < 0 ? 1 : 0;
    return nFree == kDescriptors;
}

bool hasThreads() {
    std::latch end(1); // all of them at the same time
    std::vector<std::jthread> threads;
    threads.reserve(kThreads);
    bool bAll = true;
    try {
        for (int n = 0; n < kThreads; ++n)
            threads.emplace_back([&end] { end.wait(); });
    } catch (const std::system_error&) {
        bAll = false;
    }
    end.count_down();
    return bAll;
}

} // namespace

const char* missingResource() {
    if (!hasDescriptors())
        return "fewer than 32 file descriptors are free. Is the limit (ulimit -n) too low?";
    if (!hasThreads())
        return "fewer than 8 threads can be created. Is a limit on processes (ulimit -u) or memory "
               "(ulimit -v) too low?";
    return nullptr;
}

} // namespace vellux
