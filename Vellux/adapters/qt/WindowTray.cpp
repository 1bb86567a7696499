#include "adapters/qt/WindowTray.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/FollowingText.h"
#include "adapters/qt/WindowActions.h"
#include "ports/Desktop.h"
#include "ports/Platform.h"

namespace vellux {

WindowTray::WindowTray(Dependencies dependencies)
    : m_dependencies(dependencies),
      m_tray({
          [dependencies] {
              assertMainThread(dependencies.mainThread);
              dependencies.window.makeKeyAndOrderFront();
          },
          [&controller = dependencies.controller] {
              // A tray's menu works while an alert is open, but nothing new may begin then.
              const bool bSigningIn = controller.signIn().get().result == SignInStatus::Result::Running;
              if (!alertToFront() && !bSigningIn && controller.buttonConnect()->isEnabled())
                  controller.onConnectButtonClicked(*controller.buttonConnect());
          },
          [&controller = dependencies.controller] { controller.onExit(nullptr); },
      }),
      m_update(m_dependencies.mainThread, [this] { refresh(); }) {
    VelluxWindowUi& controller = m_dependencies.controller;
    m_observations = {
        controller.lamp().observe([this] { m_update.ask(); }),
        m_dependencies.following.state().observe([this] { m_update.ask(); }),
        m_dependencies.choices.observe([this] { m_update.ask(); }),
        controller.textFieldLyncStatus()->observe([this](Control::Change) { m_update.ask(); }),
        controller.buttonConnect()->observe([this](Control::Change) { m_update.ask(); }),
    };
    refresh();
}

void WindowTray::refresh() {
    using Phase = FollowingState::Phase;
    const VelluxWindowUi& controller = m_dependencies.controller;
    const auto button = controller.buttonConnect();
    const FollowingState state = m_dependencies.following.state().get();
    // Without a connection the status line would only say so once more.
    const bool bPresence = state.phase != Phase::NotConnected && state.phase != Phase::Connecting;
    m_tray.setState({m_dependencies.controller.lamp().get(), state.bLost,
                     shortFollowingText(state, m_dependencies.choices.get().bReconnect),
                     bPresence ? QString::fromStdString(controller.textFieldLyncStatus()->text()) : QString(),
                     QString::fromStdString(button->title()), button->isEnabled()});
}

} // namespace vellux
