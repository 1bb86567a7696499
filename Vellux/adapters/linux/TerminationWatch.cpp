#include "adapters/linux/TerminationWatch.h"

#include <semaphore.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <system_error>
#include <utility>

namespace vellux {

namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};
constexpr std::int64_t kOneRequest = 2'000; // ms
constexpr std::int64_t kNone = -1;

enum class Stage { Starting, Watched, Ending };

// Used by the signal handler, which may call little other than sem_post().
std::atomic<Stage> stage{Stage::Starting};
std::atomic<std::int64_t> nFirst{kNone}; // when the first request came: ms of the monotonic clock
sem_t awake;                             // posted when the watch's thread has something to do
static_assert(decltype(stage)::is_always_lock_free && decltype(nFirst)::is_always_lock_free);

std::int64_t now() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t{time.tv_sec} * 1'000 + time.tv_nsec / 1'000'000;
}

void onSignal(int nSignal) {
    const int nError = errno;
    const std::int64_t nNow = now();
    std::int64_t nBefore = kNone;
    // Noted before the stage is read: a watch that starts meanwhile sees it.
    if (!nFirst.compare_exchange_strong(nBefore, nNow)) {
        if (nSignal != SIGHUP && nNow - nBefore > kOneRequest)
            ::_exit(128 + nSignal);
    } else if (stage == Stage::Starting) {
        ::_exit(EXIT_SUCCESS);
    } else {
        ::sem_post(&awake);
    }
    errno = nError;
}

} // namespace

void catchTerminationSignals() {
    for (const int nSignal : kSignals) {
        struct sigaction action {};
        ::sigaction(nSignal, nullptr, &action);
        if (action.sa_handler == SIG_IGN)
            continue;
        action = {};
        action.sa_handler = onSignal;
        action.sa_flags = SA_RESTART;
        ::sigaction(nSignal, &action, nullptr);
    }
}

bool isTerminationRequested() {
    return nFirst != kNone;
}

std::unique_ptr<TerminationWatch> TerminationWatch::start(std::function<void()> requested) {
    catchTerminationSignals();
    ::sem_init(&awake, /*pshared=*/0, 0);
    std::unique_ptr<TerminationWatch> watch(new TerminationWatch);
    try {
        watch->m_thread = std::thread([requested = std::move(requested)] {
            while (::sem_wait(&awake) != 0) { // a signal came
            }
            if (stage == Stage::Watched)
                requested();
        });
    } catch (const std::system_error&) {
        return nullptr;
    }
    stage = Stage::Watched;
    if (isTerminationRequested())
        ::sem_post(&awake);
    return watch;
}

TerminationWatch::~TerminationWatch() {
    if (!m_thread.joinable())
        return;
    stage = Stage::Ending;
    ::sem_post(&awake);
    m_thread.join();
}

} // namespace vellux
