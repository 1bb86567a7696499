#include "ports/InterruptWatch.h"

#include <csignal>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace vellux::simulator {

namespace {

int signalDescriptor() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return ::signalfd(-1, &signals, SFD_CLOEXEC);
}

} // namespace

InterruptWatch::InterruptWatch(std::function<void()> interrupted)
    : m_nSignals(signalDescriptor()), m_nEnd(::eventfd(0, EFD_CLOEXEC)),
      m_thread([this, interrupted = std::move(interrupted)] {
          std::array<pollfd, 2> waiting = {{{m_nEnd, POLLIN, 0}, {m_nSignals, POLLIN, 0}}};
          ::poll(waiting.data(), waiting.size(), -1);
          if (waiting[0].revents == 0)
              interrupted();
      }) {}

InterruptWatch::~InterruptWatch() {
    const std::uint64_t nOne = 1;
    static_cast<void>(::write(m_nEnd, &nOne, sizeof nOne) == sizeof nOne); // can't fail: it is far from full
    m_thread.join();
    ::close(m_nEnd);
    ::close(m_nSignals);
}

} // namespace vellux::simulator
