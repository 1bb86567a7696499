// The steps of a script, one operation each.

#include "day/DayPlayer.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "model/ConnectTitle.h"
#include "support/Text.h"

#include <algorithm>
#include <utility>

namespace vellux::simulator {

namespace {

// A light that is switched off and on has flashed when it has gone dark twice: the second time it came back
// in between.
constexpr int kDarkeningsOfAFlash = 2;

bool flashes(const std::string& strColour, const LightRecord& before, const LightRecord& now) {
    const bool bByItself = !now.state.strFlashing.empty() && now.state.strFlashing != "unset";
    if (bByItself)
        return now.state.strColour == strColour;
    return now.nDarkenings - before.nDarkenings >= kDarkeningsOfAFlash && now.strLastColour == strColour;
}

std::string joined(const std::vector<std::string>& texts) {
    std::string strAll;
    for (const std::string& strText : texts)
        strAll += (strAll.empty() ? "" : ", ") + strText;
    return strAll;
}

} // namespace

// ---- The user ---------------------------------------------------------------------------------------------

DayPlayer::Failure DayPlayer::play(const ConnectStep& step) {
    const Credentials credentials{m_dependencies.server.host(),
                                  step.strUserName.value_or(m_script.strUserName),
                                  step.strPassword.value_or(m_script.strPassword)};
    const std::size_t nAlertsBefore = m_dependencies.desktop.alerts().size();
    Failure failure = onMain([credentials](VelluxWindowUi& controller) {
        Refusal refusal = enterCredentials(controller, credentials);
        return refusal ? refusal : pressConnect(controller, kTitleConnect);
    });
    return failure || !step.bWait ? failure : waitUntilConnected(nAlertsBefore);
}

DayPlayer::Failure DayPlayer::play(const DisconnectStep&) {
    Failure failure =
        onMain([](VelluxWindowUi& controller) { return pressConnect(controller, kTitleDisconnect); });
    return failure ? failure : waitUntilNotPolling();
}

DayPlayer::Failure DayPlayer::play(const BoxStep& step) {
    return onMain([step](VelluxWindowUi& controller) { return setBox(controller, step.strBox, step.bOn); });
}

DayPlayer::Failure DayPlayer::play(const SelectStep& step) {
    return onMain(
        [step](VelluxWindowUi& controller) { return selectEntry(controller, step.strList, step.entry); });
}

DayPlayer::Failure DayPlayer::play(const ModeStep& step) {
    const std::size_t nAlertsBefore = m_dependencies.desktop.alerts().size();
    const bool bConnected = isConnected(*m_dependencies.controller.buttonConnect());
    Failure failure =
        onMain([step](VelluxWindowUi& controller) { return selectMode(controller, step.bManual); });
    if (failure)
        return failure;
    const bool bReconnects = std::exchange(m_bLeftConnected, step.bManual && bConnected) && !step.bManual;
    if (!step.bWait)
        return std::nullopt;
    if (step.bManual)
        return waitUntilNotPolling();
    return bReconnects ? waitUntilConnected(nAlertsBefore) : std::nullopt;
}

// The player's end; it never gets here.
DayPlayer::Failure DayPlayer::play(const QuitStep&) {
    return std::nullopt;
}

// ---- The world --------------------------------------------------------------------------------------------

DayPlayer::Failure DayPlayer::play(const PresenceStep& step) {
    const bool bTold = m_dependencies.server.isPolling();
    m_dependencies.server.setPresence(step.strAvailability, step.strActivity);
    if (!bTold || !step.bWait)
        return std::nullopt;
    return waitFor("the client to poll again", [this] { return m_dependencies.server.isPolling(); });
}

DayPlayer::Failure DayPlayer::play(const PlugStep& step) {
    if (m_dependencies.lights.isPlugged(m_dependencies.light) == step.bPlug)
        return std::string("the light is ") + (step.bPlug ? "plugged in already" : "not plugged in");
    if (step.bPlug)
        m_dependencies.lights.plug(m_dependencies.light);
    else
        m_dependencies.lights.unplug(m_dependencies.light);
    return onMain([](VelluxWindowUi&) { return std::nullopt; }); // after the notice, which was queued before
}

DayPlayer::Failure DayPlayer::play(const BatchStep& step) {
    const std::string strApplication = m_dependencies.server.applicationPath();
    if (strApplication.empty())
        return "no application is registered";
    Reply reply = step.reply;
    reply.strBody = replaceAll(reply.strBody, "{application}", strApplication);
    reply.strBody = replaceAll(reply.strBody, "{next}", m_dependencies.server.nextPollPath());
    m_dependencies.server.emitBatch(std::move(reply));
    return std::nullopt;
}

DayPlayer::Failure DayPlayer::play(const InterfereStep& step) {
    m_dependencies.server.interfere(step.route, step.interference);
    return std::nullopt;
}

DayPlayer::Failure DayPlayer::play(const DropStep&) {
    m_dependencies.server.cutHeldPolls();
    return std::nullopt;
}

// ---- Time -------------------------------------------------------------------------------------------------

std::vector<std::string> DayPlayer::unmet(const WaitStep& step, const LightRecord& before) const {
    const LightRecord light = m_dependencies.light->record();
    const std::string strStatus = m_dependencies.controller.textFieldLyncStatus()->text();
    const std::string strButton = m_dependencies.controller.buttonConnect()->title();
    const std::vector<std::string> alerts = m_dependencies.desktop.alerts();

    std::vector<std::string> all;
    if (step.strLight && light.state.text() != *step.strLight)
        all.push_back("the light shows " + light.state.text() + ", not " + *step.strLight);
    if (step.strFlash && !flashes(*step.strFlash, before, light))
        all.push_back("the light shows " + light.state.text() + " and does not flash " + *step.strFlash);
    if (step.strStatus && strStatus != *step.strStatus)
        all.push_back("the status is \"" + strStatus + "\", not \"" + *step.strStatus + "\"");
    if (step.strButton && strButton != *step.strButton)
        all.push_back("the button says " + strButton + ", not " + *step.strButton);
    if (step.strAlert && std::find(alerts.begin() + static_cast<std::ptrdiff_t>(m_nAlertsBefore),
                                   alerts.end(), *step.strAlert) == alerts.end())
        all.push_back("no alert says \"" + *step.strAlert + "\"");
    if (step.bPolling && m_dependencies.server.isPolling() != *step.bPolling)
        all.push_back(*step.bPolling ? "no poll is open" : "a poll is open");
    if (step.strEnabled && !isEnabled(m_dependencies.controller, *step.strEnabled))
        all.push_back(*step.strEnabled + " is disabled");
    return all;
}

DayPlayer::Failure DayPlayer::play(const WaitStep& step) {
    const LightRecord before = m_dependencies.light->record();
    if (m_dependencies.changes.waitUntil([&] { return unmet(step, before).empty(); }, step.limit))
        return std::nullopt;
    return "after " + std::to_string(step.limit.count()) + " ms " + joined(unmet(step, before));
}

DayPlayer::Failure DayPlayer::play(const SleepStep& step) {
    m_dependencies.changes.waitUntil([] { return false; }, step.time);
    return std::nullopt;
}

} // namespace vellux::simulator
