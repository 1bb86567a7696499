#include "adapters/qt/WindowTray.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "platform/Desktop.h"

namespace vellux {

WindowTray::WindowTray(Surroundings surroundings)
    : m_around(surroundings), m_tray({
                                  [surroundings] { surroundings.window.makeKeyAndOrderFront(); },
                                  [&controller = surroundings.controller] {
                                      if (controller.buttonConnect()->isEnabled())
                                          controller.onConnectButtonClicked(*controller.buttonConnect());
                                  },
                                  [&controller = surroundings.controller] { controller.onExit(nullptr); },
                              }) {
    VelluxWindowUi& controller = m_around.controller;
    m_observations = {
        controller.lamp().observe([this] { refreshSoon(); }),
        controller.textFieldLyncStatus()->observe([this](Control::Change) { refreshSoon(); }),
        controller.buttonConnect()->observe([this](Control::Change) { refreshSoon(); }),
    };
    refresh();
}

void WindowTray::refreshSoon() {
    m_around.mainThread.post([this] { refresh(); });
}

void WindowTray::refresh() {
    const VelluxWindowUi& controller = m_around.controller;
    const auto button = controller.buttonConnect();
    m_tray.setState({m_around.controller.lamp().get(),
                     QString::fromStdString(controller.textFieldLyncStatus()->text()),
                     QString::fromStdString(button->title()), button->isEnabled()});
}

} // namespace vellux
