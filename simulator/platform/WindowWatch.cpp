#include "platform/WindowWatch.h"

#include "VelluxWindowUi/VelluxWindowUi.h"

#include <utility>

namespace vellux::simulator {

namespace {

template <typename Visitor> void forEachControl(const VelluxWindowUi& controller, Visitor visit) {
    visit(*controller.buttonSelectSyncMode());
    visit(*controller.textFieldLyncServerName());
    visit(*controller.textFieldUsername());
    visit(*controller.textFieldPassword());
    visit(*controller.buttonFlashOnCall());
    visit(*controller.buttonLightOffOnAway());
    visit(*controller.buttonLightOffOnAvailable());
    visit(*controller.syncModeColorList());
    visit(*controller.syncModeFlashSpeedList());
    visit(*controller.buttonConnect());
    visit(*controller.textFieldLyncStatus());
    visit(*controller.buttonSelectManualMode());
    visit(*controller.manualModeColorList());
    visit(*controller.manualModeFlashSpeedList());
}

// Prints the value under a heading unless it is what was printed last.
void printChange(Console& console, const char* strHeading, std::string& strPrinted, std::string strValue) {
    if (strValue == strPrinted)
        return;
    console.print(strValue.empty() ? strHeading : strHeading + (" " + strValue));
    strPrinted = std::move(strValue);
}

} // namespace

WindowWatch::WindowWatch(VelluxWindowUi& controller, Console& console, Changes& changes)
    : m_controller(controller), m_console(console), m_strStatus(controller.textFieldLyncStatus()->text()),
      m_strButton(controller.buttonConnect()->title()) {
    m_observations = {
        controller.textFieldLyncStatus()->observe([this](Control::Change) { statusWritten(); }),
        controller.buttonConnect()->observe([this](Control::Change) { buttonWritten(); }),
    };
    forEachControl(controller, [this, &changes](Control& control) {
        m_observations.push_back(control.observe([&changes](Control::Change) { changes.notify(); }));
    });
}

void WindowWatch::statusWritten() {
    ScopedLock lock(m_mutex);
    printChange(m_console, "status", m_strStatus, m_controller.textFieldLyncStatus()->text());
}

void WindowWatch::buttonWritten() {
    ScopedLock lock(m_mutex);
    printChange(m_console, "button", m_strButton, m_controller.buttonConnect()->title());
}

} // namespace vellux::simulator
