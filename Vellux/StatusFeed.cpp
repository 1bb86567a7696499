#include "StatusFeed.h"

#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "model/ConnectTitle.h"

#include <utility>

namespace vellux {

namespace {

std::string stateWord(const VelluxWindowUi& controller) {
    // Connecting opens the channel first and enables the button last, so they are read in the opposite order.
    const bool bSettled = controller.buttonConnect()->isEnabled();
    const ChannelState channel = VelluxHttp::sharedVelluxHttp().channel().get();
    const std::string strTitle = controller.buttonConnect()->title();
    if (controller.buttonSelectSyncMode()->state() != Button::kOn)
        return "manual";
    if (strTitle == kTitleConnect)
        return "not connected";
    if (strTitle != kTitleDisconnect || !bSettled)
        return "connecting";
    return channel == ChannelState::Open ? "following" : "ended";
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

} // namespace

ProgramStatus currentStatus() {
    VelluxWindowUi& controller = VelluxWindowUi::sharedVelluxWindowUi();
    const VelluxHttp& client = VelluxHttp::sharedVelluxHttp();
    ProgramStatus status{stateWord(controller), "", false, lampWord(controller.lamp().get()),
                         lightWord(controller.light().get().access)};
    if (status.strState == "following") { // otherwise nobody knows whether they still hold
        status.strPresence = client.getPresenceStatus().value_or("");
        status.bOnCall = client.IsUserOnCall();
    }
    return status;
}

StatusFeed::StatusFeed(MainThread& mainThread, ProgramStatusSource source, Changed changed)
    : m_mainThread(mainThread), m_link(std::make_shared<Link>()) {
    assertMainThread(mainThread);
    m_link->source = std::move(source);
    m_link->changed = std::move(changed);
    VelluxWindowUi& controller = VelluxWindowUi::sharedVelluxWindowUi();
    const auto askSoon = [this] { ask(); };
    const auto askOnChange = [this](Control::Change) { ask(); };
    m_observations = {
        VelluxHttp::sharedVelluxHttp().channel().observe(askSoon),
        controller.lamp().observe(askSoon),
        controller.light().observe(askSoon),
        controller.buttonConnect()->observe(askOnChange),
        controller.buttonSelectSyncMode()->observe(askOnChange),
        controller.textFieldLyncStatus()->observe(
            askOnChange), // written after each presence, and with the call
    };
    ask();
}

StatusFeed::~StatusFeed() {
    assertMainThread(m_mainThread);
    m_link->source = nullptr;
    m_link->changed = nullptr;
}

void StatusFeed::ask() {
    if (m_link->bQueued.exchange(true))
        return;
    m_mainThread.post([link = m_link, &mainThread = m_mainThread] {
        assertMainThread(mainThread);
        link->bQueued = false; // first, so that a change from now on asks again
        if (!link->source)
            return;
        ProgramStatus status = link->source();
        if (status == link->last)
            return;
        link->last = std::move(status);
        link->changed(link->last);
    });
}

} // namespace vellux
