#include "app/UnreachedLight.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "ports/Platform.h"

#include <utility>

namespace vellux {

namespace {

using Phase = FollowingState::Phase;

bool isUnreached(const FollowingState& state) {
    return state.phase == Phase::NotReached ||
           (state.bLost && (state.phase == Phase::Connecting || state.phase == Phase::NotConnected));
}

} // namespace

UnreachedLight::UnreachedLight(const Dependencies& dependencies)
    : m_dependencies(dependencies), m_update(dependencies.mainThread, [this] {
          assertMainThread();
          update();
      }) {
    const auto ask = [this] { m_update.ask(); };
    m_observations[0] = m_dependencies.following.state().observe(ask);
    m_observations[1] = m_dependencies.choices.observe(ask);
}

void UnreachedLight::update() {
    const FollowingState state = m_dependencies.following.state().get();
    const bool bWanted = m_dependencies.choices.get().bLightOffWhenNotReached && isUnreached(state);
    if (bWanted) {
        m_return.reset();
        if (m_due == nullptr && !m_bOff)
            m_due = m_dependencies.timers.callAfter(kPatience, [this] {
                assertMainThread();
                m_due.reset();
                m_bOff = true;
                m_dependencies.controller.switchOffUntilReached();
            });
        return;
    }
    m_due.reset();
    const bool bShows = state.phase == Phase::Following || state.phase == Phase::Ended || isUnreached(state);
    if (!bShows)
        m_return.reset();
    if (std::exchange(m_bOff, false) && bShows)
        m_return = m_dependencies.timers.callAfter(std::chrono::milliseconds(0), [this] {
            assertMainThread();
            m_dependencies.controller.showLastPresence();
        });
}

} // namespace vellux
