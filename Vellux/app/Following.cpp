#include "app/Following.h"

#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "model/ConnectTitle.h"

namespace vellux {

namespace {

using Phase = FollowingState::Phase;

Phase phaseOf(const VelluxWindowUi& controller, const SignInStatus& signIn, const ChannelStatus& channel) {
    if (controller.buttonSelectSyncMode()->state() != Button::kOn)
        return Phase::Manual;
    if (signIn.result == SignInStatus::Result::Running)
        return Phase::Connecting;
    if (!isConnected(*controller.buttonConnect()))
        return Phase::NotConnected;
    switch (channel.state) {
    case ChannelState::Open:
        return Phase::Following;
    case ChannelState::NotReached:
        return Phase::NotReached;
    case ChannelState::Ended:
        return Phase::Ended;
    case ChannelState::Closed:
        break;
    }
    return Phase::NotConnected;
}

bool isLost(bool bBefore, Phase phase, const SignInStatus& signIn) {
    switch (phase) {
    case Phase::NotReached:
    case Phase::Ended:
        return true;
    case Phase::Connecting:
        return bBefore && signIn.bAutomatic;
    case Phase::NotConnected:
        return bBefore && signIn.result != SignInStatus::Result::None;
    case Phase::Manual:
    case Phase::Following:
        break;
    }
    return false;
}

} // namespace

Following::Following(MainThread& mainThread, VelluxWindowUi& controller, VelluxHttp& client)
    : m_controller(controller), m_client(client), m_update(mainThread, [this] { update(); }) {
    const auto ask = [this] { m_update.ask(); };
    const auto askOnChange = [ask](Control::Change) { ask(); };
    m_observations = {controller.signIn().observe(ask), client.channel().observe(ask),
                      client.presence().observe(ask), controller.buttonConnect()->observe(askOnChange),
                      controller.buttonSelectSyncMode()->observe(askOnChange)};
    update();
}

void Following::update() {
    // The end of a sign-in is written last, so it is read first.
    FollowingState state;
    state.signIn = m_controller.signIn().get();
    state.channel = m_client.channel().get();
    state.phase = phaseOf(m_controller, state.signIn, state.channel);
    state.bOnCall = m_client.presence().get().bOnCall;
    state.bLost = isLost(m_state.get().bLost, state.phase, state.signIn);
    m_state.set(state);
}

} // namespace vellux
