#include "adapters/dbus/NetworkNotice.h"

#include "adapters/dbus/Buses.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QObject>
#include <QString>

#include <optional>
#include <utility>

namespace vellux {

namespace {

const QString kManager = QStringLiteral("org.freedesktop.NetworkManager"); // its name and its interface
const QString kManagerPath = QStringLiteral("/org/freedesktop/NetworkManager");

// NetworkManager's states; the greater ones, 60 and 70, reach the site and the whole Internet.
constexpr quint32 kConnectedLocally = 50;

} // namespace

class NetworkListener : public QObject {
    Q_OBJECT
public:
    explicit NetworkListener(std::function<void()> cameBack) : m_cameBack(std::move(cameBack)) {
        std::optional<QDBusConnection> bus = systemBus();
        if (!bus)
            return;
        bus->connect(kManager, kManagerPath, kManager, QStringLiteral("StateChanged"), this,
                     SLOT(onStateChanged(quint32)));
        QDBusMessage call = QDBusMessage::createMethodCall(
            kManager, kManagerPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        call << kManager << QStringLiteral("State");
        call.setAutoStartService(false);
        auto* const pAnswer = new QDBusPendingCallWatcher(bus->asyncCall(call), this);
        connect(pAnswer, &QDBusPendingCallWatcher::finished, this, [this, pAnswer] {
            pAnswer->deleteLater();
            const QDBusPendingReply<QDBusVariant> state = *pAnswer;
            if (state.isValid() && !m_nState)
                m_nState = state.value().variant().toUInt();
        });
    }

private Q_SLOTS:
    void onStateChanged(quint32 nState) {
        const quint32 nBefore = std::exchange(m_nState, nState).value_or(0);
        if (nState >= kConnectedLocally && nState > nBefore)
            m_cameBack();
    }

private:
    const std::function<void()> m_cameBack;
    std::optional<quint32> m_nState; // absent until it is known
};

NetworkNotice::NetworkNotice(std::function<void()> cameBack)
    : m_listener(std::make_unique<NetworkListener>(std::move(cameBack))) {}

NetworkNotice::~NetworkNotice() = default;

} // namespace vellux

#include "NetworkNotice.moc"
