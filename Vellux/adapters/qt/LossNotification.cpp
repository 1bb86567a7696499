#include "adapters/qt/LossNotification.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/dbus/Notification.h"
#include "adapters/qt/FailureText.h"
#include "adapters/qt/FollowingText.h"
#include "adapters/qt/WindowActions.h"

#include <QCoreApplication>

#include <utility>

namespace vellux {

namespace {

const QString kReconnectKey = QStringLiteral("reconnect");

struct LossWords {
    Q_DECLARE_TR_FUNCTIONS(vellux::LossNotification)
public:
    static QString reconnect() { return tr("Reconnect"); }
    static QString show() { return tr("Show"); }
    static QString outOfDate() { return tr("The light may no longer show your presence."); }
};

} // namespace

LossNotification::LossNotification(Dependencies dependencies)
    : m_dependencies(std::move(dependencies)),
      m_notice({m_dependencies.mainThread, m_dependencies.timers, m_dependencies.following,
                m_dependencies.choices, [this](const FollowingState& state) { show(state); },
                [this] { m_shown.reset(); }}) {}

LossNotification::~LossNotification() = default;

void LossNotification::show(const FollowingState& state) {
    const QString strWhy = whyNotConnected(state, m_dependencies.log);
    m_shown.reset(); // withdrawn before the other one appears
    m_shown = showNotification(
        shortFollowingText(state, m_dependencies.choices.get().bReconnect),
        strWhy.isEmpty() ? LossWords::outOfDate() : LossWords::outOfDate() + QStringLiteral(" ") + strWhy,
        // "default" is a press on the notification itself.
        {{QStringLiteral("default"), LossWords::show()},
         {kReconnectKey, LossWords::reconnect()},
         {QStringLiteral("show"), LossWords::show()}},
        [this](const QString& strKey, const QString& strToken) { press(strKey, strToken); });
}

// Nothing new may begin while an alert is open; it comes to the front instead.
void LossNotification::press(const QString& strKey, const QString& strToken) {
    if (strKey != kReconnectKey)
        m_dependencies.showWindow(strToken);
    else if (!alertToFront() && m_dependencies.controller.buttonConnect()->isEnabled())
        m_dependencies.controller.reconnect();
}

} // namespace vellux
