// The player itself: its thread, the end, and what the steps share. Steps.cpp holds the steps.

#include "day/DayPlayer.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "model/ConnectTitle.h"
#include "threads/Shared.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace vellux::simulator {

namespace {

constexpr std::chrono::milliseconds kLimit{20'000};
// The main thread may have to wait for requests of 30 s. If it does not come back after this, it never will.
constexpr std::chrono::milliseconds kMainThreadLimit{90'000};

void tell(const std::string& strText) {
    std::fprintf(stderr, "vellux-simulator: %s\n", strText.c_str());
}

// The main thread hangs, so nothing can be brought to an orderly end.
[[noreturn]] void giveUp() {
    tell("the main thread hangs");
    std::_Exit(EXIT_FAILURE);
}

} // namespace

DayPlayer::~DayPlayer() {
    join();
}

void DayPlayer::start() {
    m_thread = std::thread([this] { run(); });
}

void DayPlayer::join() {
    if (m_thread.joinable())
        m_thread.join();
}

void DayPlayer::applicationHasEnded() {
    m_bApplicationEnded = true;
    m_dependencies.changes.notify();
}

void DayPlayer::run() {
    m_bSucceeded = playAll();
    quit();
}

bool DayPlayer::playAll() {
    for (std::size_t n = 0; n < m_script.steps.size(); ++n) {
        const NamedStep& named = m_script.steps[n];
        if (std::holds_alternative<QuitStep>(named.step))
            return true;
        if (!std::holds_alternative<WaitStep>(named.step))
            m_nAlertsBefore = m_dependencies.desktop.alerts().size();
        const Failure failure = std::visit([this](const auto& step) { return play(step); }, named.step);
        if (m_dependencies.changes.hasEnded()) {
            tell("interrupted");
            return false;
        }
        if (failure) {
            tell("step " + std::to_string(n + 1) + " (" + named.strName + "): " + *failure);
            return false;
        }
    }
    return true;
}

void DayPlayer::quit() {
    m_dependencies.mainThread.post([&controller = m_dependencies.controller] { controller.onExit(nullptr); });
    const bool bEnded =
        m_dependencies.changes.waitUntil([this] { return m_bApplicationEnded.load(); }, kMainThreadLimit);
    if (!bEnded && !m_dependencies.changes.hasEnded())
        giveUp();
}

DayPlayer::Failure DayPlayer::onMain(std::function<Refusal(VelluxWindowUi&)> action) {
    struct Call {
        Refusal refusal;
        Shared<bool> done{false};
    };
    const auto call = std::make_shared<Call>();
    m_dependencies.mainThread.post([this, call, action = std::move(action)] {
        call->refusal = action(m_dependencies.controller);
        call->done.set(true);
        m_dependencies.changes.notify();
    });
    if (m_dependencies.changes.waitUntil([call] { return call->done.get(); }, kMainThreadLimit))
        return call->refusal;
    if (!m_dependencies.changes.hasEnded())
        giveUp();
    return "interrupted";
}

DayPlayer::Failure DayPlayer::waitFor(const char* strWhat, const std::function<bool()>& holds) {
    if (m_dependencies.changes.waitUntil(holds, kLimit))
        return std::nullopt;
    return std::string("waited in vain for ") + strWhat;
}

// An attempt ends with an open poll, or with an alert and the button as it was before.
DayPlayer::Failure DayPlayer::waitUntilConnected(std::size_t nAlertsBefore) {
    return waitFor("the connection to stand or to fail", [this, nAlertsBefore] {
        const auto button = m_dependencies.controller.buttonConnect();
        if (!button->isEnabled())
            return false;
        const std::string strTitle = button->title();
        if (strTitle == kTitleDisconnect)
            return m_dependencies.server.isPolling();
        return strTitle == kTitleConnect && m_dependencies.desktop.alerts().size() > nAlertsBefore;
    });
}

DayPlayer::Failure DayPlayer::waitUntilNotPolling() {
    return waitFor("the client to give its poll up", [this] { return !m_dependencies.server.isPolling(); });
}

} // namespace vellux::simulator
