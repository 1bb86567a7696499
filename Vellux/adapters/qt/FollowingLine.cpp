#include "adapters/qt/FollowingLine.h"

#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "ui_MainWindow.h"

#include <utility>

namespace vellux {

FollowingLine::FollowingLine(const MainWindow::Surroundings& around, Ui::MainWindow& form,
                             std::function<void()> lost)
    : m_around(around), m_form(form), m_lost(std::move(lost)),
      m_refresher(around.mainThread, [this] { show(); }) {
    // The room for the button is always there, so that nothing moves when it comes.
    QSizePolicy policy = m_form.buttonReconnect->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    m_form.buttonReconnect->setSizePolicy(policy);
    QObject::connect(m_form.buttonReconnect, &QPushButton::clicked, &m_receiver,
                     [this] { m_around.controller.reconnect(); });
    const auto ask = [this] { m_refresher.ask(); };
    const auto askOnChange = [ask](Control::Change) { ask(); };
    m_observations[0] = m_around.client.channel().observe(ask);
    m_observations[1] = m_around.controller.buttonConnect()->observe(askOnChange);
    m_observations[2] = m_around.controller.buttonSelectSyncMode()->observe(askOnChange);
    show();
}

void FollowingLine::show() {
    // A connection that is being made opens the channel and then enables the button: read in the other order.
    const auto button = m_around.controller.buttonConnect();
    const bool bSettled = button->isEnabled();
    const ChannelState channel = m_around.client.channel().get();
    const std::string strTitle = button->title();
    const bool bConnected = strTitle == "Disconnect";
    const bool bSyncMode = m_around.controller.buttonSelectSyncMode()->state() == Button::kOn;
    const bool bWasLost = std::exchange(m_bLost, bConnected && bSettled && channel == ChannelState::Ended);
    QString strLine;
    if (m_bLost)
        strLine = MainWindow::tr("Your presence is no longer followed.");
    else if (bConnected && channel == ChannelState::Open)
        strLine = MainWindow::tr("Following your presence.");
    else if (bSyncMode && strTitle == "Connect")
        strLine = MainWindow::tr("Not connected.");
    m_form.labelFollowing->setText(strLine);
    m_form.buttonReconnect->setVisible(m_bLost);
    if (m_bLost && !bWasLost)
        m_lost();
}

} // namespace vellux
