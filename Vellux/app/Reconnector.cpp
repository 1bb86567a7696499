#include "app/Reconnector.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "ports/Platform.h"

#include <algorithm>
#include <random>
#include <utility>

namespace vellux {

namespace {

using Phase = FollowingState::Phase;
using Result = SignInStatus::Result;

bool isToAttempt(const FollowingState& state) {
    return state.phase == Phase::Ended ||
           (state.phase == Phase::NotConnected && state.signIn.result == Result::Failed);
}

} // namespace

double Reconnector::randomJitter() {
    static std::minstd_rand generator{std::random_device()()};
    return std::uniform_real_distribution(0.8, 1.2)(generator);
}

Reconnector::Reconnector(const Dependencies& dependencies)
    : m_dependencies(dependencies), m_update(dependencies.mainThread, [this] {
          assertMainThread();
          update();
      }) {
    const auto ask = [this] { m_update.ask(); };
    m_observations[0] = m_dependencies.following.state().observe(ask);
    m_observations[1] = m_dependencies.choices.observe(ask);
    // Disabled while an alert about the failure waits for the user.
    m_observations[2] = m_dependencies.controller.buttonConnect()->observe([ask](Control::Change) { ask(); });
    m_update.ask();
}

void Reconnector::update() {
    const FollowingState state = m_dependencies.following.state().get();
    const bool bChosen = m_dependencies.choices.get().bReconnect;
    m_dependencies.controller.setSilentByItself(bChosen);
    if (!bChosen) {
        forget();
        return;
    }
    if (state.phase != Phase::Following)
        m_settled.reset();
    else if (m_settled == nullptr)
        m_settled = m_dependencies.timers.callAfter(kSettled, [this] { m_delay = kFirstDelay; });
    if (!isToAttempt(state)) {
        m_due.reset();
        const bool bUserActed = state.phase == Phase::Manual || (state.phase == Phase::NotConnected &&
                                                                 state.signIn.result != Result::Succeeded);
        if (bUserActed || (state.phase == Phase::Connecting && !state.signIn.bAutomatic))
            forget();
        return;
    }
    if (m_due == nullptr && m_dependencies.controller.buttonConnect()->isEnabled())
        plan();
}

void Reconnector::plan() {
    const auto delay =
        std::chrono::duration_cast<std::chrono::milliseconds>(m_delay * m_dependencies.jitter());
    m_delay = std::min<std::chrono::milliseconds>(2 * m_delay, kLongestDelay);
    m_due = m_dependencies.timers.callAfter(delay, [this] {
        assertMainThread();
        attempt();
    });
}

void Reconnector::attempt() {
    m_due.reset();
    m_bHurried = false;
    m_rest = m_dependencies.timers.callAfter(kFirstDelay, [this] {
        assertMainThread();
        m_rest.reset();
        if (m_bHurried && m_due != nullptr)
            attempt();
    });
    m_dependencies.controller.reconnectSilently();
}

void Reconnector::hurry() {
    assertMainThread();
    m_delay = kFirstDelay; // also for an attempt that is under way and may fail
    if (m_due == nullptr)
        return;
    if (m_rest != nullptr)
        m_bHurried = true;
    else
        attempt();
}

void Reconnector::forget() {
    m_due.reset();
    m_rest.reset();
    m_settled.reset();
    m_bHurried = false;
    m_delay = kFirstDelay;
}

} // namespace vellux
