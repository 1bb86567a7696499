#include "adapters/linux/TerminationWatch.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <utility>

namespace vellux {

namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};
constexpr std::uint64_t kRequest = 1;
constexpr std::uint64_t kEnd = std::uint64_t{1} << 32;

// What the handler touches; it may do little else than write to a descriptor.
std::atomic<int> nWatch{-1};
std::atomic<bool> bRequested{false};

void tell(std::uint64_t nWhat) {
    const int nError = errno;
    static_cast<void>(::write(nWatch, &nWhat, sizeof nWhat) ==
                      sizeof nWhat); // can't fail: it is far from full
    errno = nError;
}

void onSignal(int nSignal) {
    if (bRequested.exchange(true))
        ::_exit(128 + nSignal);
    tell(kRequest);
}

void handle(void (*handler)(int)) {
    for (const int nSignal : kSignals) {
        struct sigaction action {};
        ::sigaction(nSignal, nullptr, &action);
        if (action.sa_handler == SIG_IGN)
            continue;
        action = {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART;
        ::sigaction(nSignal, &action, nullptr);
    }
}

} // namespace

TerminationWatch::TerminationWatch(std::function<void()> requested) {
    nWatch = ::eventfd(0, EFD_CLOEXEC);
    m_thread = std::thread([requested = std::move(requested)] {
        std::uint64_t nTold = 0;
        while (nTold < kEnd) {
            std::uint64_t nMore = 0;
            if (::read(nWatch, &nMore, sizeof nMore) != sizeof nMore)
                continue;
            if (nTold == 0 && nMore < kEnd)
                requested();
            nTold += nMore;
        }
    });
    handle(onSignal);
}

TerminationWatch::~TerminationWatch() {
    handle(SIG_DFL);
    tell(kEnd);
    m_thread.join();
    ::close(nWatch.exchange(-1));
}

} // namespace vellux
