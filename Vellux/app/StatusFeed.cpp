#include "app/StatusFeed.h"

#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"

#include <utility>

namespace vellux {

namespace {

const char* stateWord(FollowingState::Phase phase) {
    using Phase = FollowingState::Phase;
    switch (phase) {
    case Phase::Manual:
        return "manual";
    case Phase::NotConnected:
        return "not connected";
    case Phase::Connecting:
        return "connecting";
    case Phase::Following:
        return "following";
    case Phase::NotReached:
        return "not reached";
    case Phase::Ended:
        break;
    }
    return "ended";
}

std::string lampWord(const LampState& lamp) {
    if (!isColour(lamp.nColor) || lamp.nColor == kColourOff)
        return "Off";
    return std::string(kColours[lamp.nColor].strName) + (lamp.bFlashing ? ", flashing" : "");
}

std::string lightWord(LightState::Access access) {
    switch (access) {
    case LightState::Access::NoLight:
        return "none";
    case LightState::Access::Usable:
        return "usable";
    case LightState::Access::NotPermitted:
        return "not permitted";
    case LightState::Access::NotUsable:
        break;
    }
    return "not usable";
}

ProgramStatus compose(const StatusFeed::Dependencies& from) {
    const FollowingState following = from.following.state().get();
    ProgramStatus status{stateWord(following.phase), "", false, lampWord(from.controller.lamp().get()),
                         lightWord(from.controller.light().get().access)};
    if (following.phase ==
        FollowingState::Phase::Following) { // otherwise nobody knows whether they still hold
        const PresenceStatus presence = from.client.presence().get();
        status.strPresence = presence.strToken.value_or("");
        status.bOnCall = presence.bOnCall;
    }
    return status;
}

} // namespace

StatusFeed::StatusFeed(const Dependencies& dependencies, Changed changed)
    : m_mainThread(dependencies.mainThread),
      m_link(std::make_shared<Link>(dependencies, std::move(changed))) {
    assertMainThread(m_mainThread);
    const auto askSoon = [this] { ask(); };
    m_observations = {
        dependencies.following.state().observe(askSoon), dependencies.client.presence().observe(askSoon),
        dependencies.controller.lamp().observe(askSoon), dependencies.controller.light().observe(askSoon)};
    ask();
}

StatusFeed::~StatusFeed() {
    assertMainThread(m_mainThread);
    m_link->changed = nullptr;
}

void StatusFeed::ask() {
    if (m_link->bQueued.exchange(true))
        return;
    m_mainThread.post([link = m_link, &mainThread = m_mainThread] {
        assertMainThread(mainThread);
        link->bQueued = false; // first, so that a change from now on asks again
        if (!link->changed)
            return;
        ProgramStatus status = compose(link->dependencies);
        if (status == link->last)
            return;
        link->last = std::move(status);
        link->changed(link->last);
    });
}

} // namespace vellux
