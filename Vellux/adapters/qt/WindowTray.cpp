#include "adapters/qt/WindowTray.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/WindowActions.h"
#include "platform/Desktop.h"
#include "platform/Platform.h"

namespace vellux {

WindowTray::WindowTray(Surroundings surroundings)
    : m_around(surroundings), m_tray({
                                  [surroundings] {
                                      assertMainThread(surroundings.mainThread);
                                      surroundings.window.makeKeyAndOrderFront();
                                  },
                                  [&controller = surroundings.controller] {
                                      // A tray's menu works beside an open alert, under which nothing new begins.
                                      if (!alertToFront() && controller.buttonConnect()->isEnabled())
                                          controller.onConnectButtonClicked(*controller.buttonConnect());
                                  },
                                  [&controller = surroundings.controller] { controller.onExit(nullptr); },
                              }),
      m_refresher(m_around.mainThread, [this] { refresh(); }) {
    VelluxWindowUi& controller = m_around.controller;
    m_observations = {
        controller.lamp().observe([this] { m_refresher.ask(); }),
        controller.textFieldLyncStatus()->observe([this](Control::Change) { m_refresher.ask(); }),
        controller.buttonConnect()->observe([this](Control::Change) { m_refresher.ask(); }),
    };
    refresh();
}

void WindowTray::refresh() {
    const VelluxWindowUi& controller = m_around.controller;
    const auto button = controller.buttonConnect();
    m_tray.setState({m_around.controller.lamp().get(),
                     QString::fromStdString(controller.textFieldLyncStatus()->text()),
                     QString::fromStdString(button->title()), button->isEnabled()});
}

} // namespace vellux
