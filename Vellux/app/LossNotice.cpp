#include "app/LossNotice.h"

#include "ports/Platform.h"

#include <algorithm>
#include <utility>

namespace vellux {

namespace {

// Whether the program no longer tries by itself, be it by polls or by signing in again. On the way from one
// state to another, Disconnect and the program's end included, it has given up nothing.
bool hasGivenUp(const FollowingState& state, bool bReconnect) {
    using Phase = FollowingState::Phase;
    using Result = SignInStatus::Result;
    if (state.phase == Phase::Ended)
        return !bReconnect;
    return state.phase == Phase::NotConnected &&
           (state.signIn.result == Result::Refused || (state.signIn.result == Result::Failed && !bReconnect));
}

} // namespace

LossNotice::LossNotice(Dependencies dependencies)
    : m_dependencies(std::move(dependencies)), m_update(m_dependencies.mainThread, [this] {
          assertMainThread();
          update();
      }) {
    const auto ask = [this] { m_update.ask(); };
    m_observations[0] = m_dependencies.following.state().observe(ask);
    m_observations[1] = m_dependencies.choices.observe(ask);
}

void LossNotice::update() {
    const FollowingState state = m_dependencies.following.state().get();
    if (!state.bLost) {
        m_due.reset();
        if (std::exchange(m_told, Told::Nothing) != Told::Nothing)
            m_dependencies.withdraw();
    } else if (hasGivenUp(state, m_dependencies.choices.get().bReconnect)) {
        m_due.reset();
        tell(Told::GivenUp);
    } else if (m_told == Told::Nothing && m_due == nullptr) {
        m_due = m_dependencies.timers.callAfter(kPatience, [this] {
            m_due.reset();
            tell(Told::StillTrying);
        });
    }
}

void LossNotice::tell(Told what) {
    if (what > std::exchange(m_told, std::max(what, m_told)))
        m_dependencies.show(m_dependencies.following.state().get());
}

} // namespace vellux
