#include "adapters/dbus/StatusNotifierHost.h"

#include "adapters/dbus/Buses.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QObject>

#include <utility>

namespace vellux {

namespace {

const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher"); // its name and its interface
const QString kWatcherPath = QStringLiteral("/StatusNotifierWatcher");

} // namespace

class StatusNotifierListener : public QObject {
    Q_OBJECT
public:
    explicit StatusNotifierListener(std::function<void(bool bPresent)> changed)
        : m_changed(std::move(changed)), m_bus(sessionBus()) {
        if (!m_bus)
            return;
        m_watcher.setConnection(*m_bus);
        m_watcher.addWatchedService(kWatcher);
        connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
                [this](const QString&, const QString&, const QString& strNewOwner) {
                    setPresent(false);
                    if (!strNewOwner.isEmpty())
                        askForHost();
                });
        m_bus->connect(kWatcher, kWatcherPath, kWatcher, QStringLiteral("StatusNotifierHostRegistered"), this,
                       SLOT(askForHost()));
        askForHost();
    }

private Q_SLOTS:
    void askForHost() {
        QDBusMessage call = QDBusMessage::createMethodCall(
            kWatcher, kWatcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        call << kWatcher << QStringLiteral("IsStatusNotifierHostRegistered");
        call.setAutoStartService(false);
        auto* const pAnswer = new QDBusPendingCallWatcher(m_bus->asyncCall(call), this);
        connect(pAnswer, &QDBusPendingCallWatcher::finished, this, [this, pAnswer] {
            pAnswer->deleteLater();
            const QDBusPendingReply<QDBusVariant> registered = *pAnswer;
            if (registered.isValid() && registered.value().variant().toBool())
                setPresent(true);
        });
    }

private:
    void setPresent(bool bPresent) {
        if (std::exchange(m_bPresent, bPresent) != bPresent)
            m_changed(bPresent);
    }

    const std::function<void(bool bPresent)> m_changed;
    std::optional<QDBusConnection> m_bus;
    QDBusServiceWatcher m_watcher;
    bool m_bPresent = false;
};

StatusNotifierHost::StatusNotifierHost(std::function<void(bool bPresent)> changed)
    : m_listener(std::make_unique<StatusNotifierListener>(std::move(changed))) {}

StatusNotifierHost::~StatusNotifierHost() = default;

} // namespace vellux

#include "StatusNotifierHost.moc"
