#include "adapters/qt/ChannelStatusLine.h"

#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "model/ConnectTitle.h"
#include "ui_MainWindow.h"

#include <utility>

namespace vellux {

ChannelStatusLine::ChannelStatusLine(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form,
                                     std::function<void()> lost)
    : m_dependencies(dependencies), m_form(form), m_lost(std::move(lost)),
      m_update(dependencies.mainThread, [this] { show(); }) {
    // Room for the button is always reserved, so that nothing moves when it appears.
    QSizePolicy policy = m_form.buttonReconnect->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    m_form.buttonReconnect->setSizePolicy(policy);
    QObject::connect(m_form.buttonReconnect, &QPushButton::clicked, &m_receiver,
                     [this] { m_dependencies.controller.reconnect(); });
    const auto ask = [this] { m_update.ask(); };
    const auto askOnChange = [ask](Control::Change) { ask(); };
    m_observations[0] = m_dependencies.client.channel().observe(ask);
    m_observations[1] = m_dependencies.controller.buttonConnect()->observe(askOnChange);
    m_observations[2] = m_dependencies.controller.buttonSelectSyncMode()->observe(askOnChange);
    show();
}

void ChannelStatusLine::show() {
    // Connecting opens the channel first and enables the button last, so they are read in the opposite order.
    const auto button = m_dependencies.controller.buttonConnect();
    const bool bSettled = button->isEnabled();
    const ChannelState channel = m_dependencies.client.channel().get().state;
    const std::string strTitle = button->title();
    const bool bConnected = strTitle == kTitleDisconnect;
    const bool bSyncMode = m_dependencies.controller.buttonSelectSyncMode()->state() == Button::kOn;
    const bool bWasLost = std::exchange(m_bLost, bConnected && bSettled && channel == ChannelState::Ended);
    QString strLine;
    if (m_bLost)
        strLine = MainWindow::tr("Your presence is no longer followed.");
    else if (bConnected && channel == ChannelState::Open)
        strLine = MainWindow::tr("Following your presence.");
    else if (bSyncMode && strTitle == kTitleConnect)
        strLine = MainWindow::tr("Not connected.");
    m_form.labelFollowing->setText(strLine);
    m_form.buttonReconnect->setVisible(m_bLost);
    if (m_bLost && !bWasLost)
        m_lost();
}

} // namespace vellux
