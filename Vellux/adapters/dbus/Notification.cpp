#include "adapters/dbus/Notification.h"

#include "adapters/ApplicationId.h"
#include "adapters/dbus/Buses.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariantMap>

#include <optional>
#include <utility>

namespace vellux {

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications"); // its name and its interface
const QString kServicePath = QStringLiteral("/org/freedesktop/Notifications");

QDBusMessage toService(const char* strMethod) {
    return QDBusMessage::createMethodCall(kService, kServicePath, kService, QLatin1String(strMethod));
}

/// `actions` as the service wants them: each key with its label behind it.
QDBusMessage notifyCall(const QString& strSummary, const QString& strBody, const QStringList& actions) {
    const QString strId = QString::fromLatin1(kApplicationId);
    constexpr quint32 kReplacesNone = 0;
    constexpr qint32 kServersOwnTime = -1;
    return toService("Notify") << QStringLiteral("Vellux") << kReplacesNone << strId << strSummary
                               << strBody.toHtmlEscaped() // a body is markup
                               << actions << QVariantMap{{QStringLiteral("desktop-entry"), strId}}
                               << kServersOwnTime;
}

} // namespace

/// One notification with actions: an object of its own, because the service may answer after the caller has
/// let go of it, and what it has shown must then be withdrawn.
class NotificationRequest : public QObject {
    Q_OBJECT
public:
    NotificationRequest(const QDBusConnection& bus, NotificationPressed pressed)
        : QObject(QCoreApplication::instance()), m_bus(bus), m_pressed(std::move(pressed)) {
        listen("ActionInvoked", SLOT(onActionInvoked(quint32, QString)));
        listen("ActivationToken", SLOT(onActivationToken(quint32, QString)));
        listen("NotificationClosed", SLOT(onClosed(quint32)));
    }

    void show(const QString& strSummary, const QString& strBody, const QList<NotificationAction>& actions) {
        ask(toService("GetCapabilities"), [=, this](const QDBusPendingCall& answer) {
            const QDBusPendingReply<QStringList> capabilities = answer;
            if (m_bWithdrawn)
                return deleteLater();
            QStringList known;
            if (capabilities.isValid() && capabilities.value().contains(QStringLiteral("actions")))
                for (const NotificationAction& action : actions)
                    known << action.strKey << action.strLabel;
            ask(notifyCall(strSummary, strBody, known), [this](const QDBusPendingCall& notified) {
                const QDBusPendingReply<quint32> id = notified;
                if (id.isValid())
                    m_nId = id.value();
                if (m_bWithdrawn)
                    close();
            });
        });
    }

    void withdraw() {
        m_bWithdrawn = true;
        if (!m_bAsking)
            close(); // otherwise the answer does that
    }

private Q_SLOTS:
    void onActivationToken(quint32 nId, const QString& strToken) {
        if (nId == m_nId)
            m_strToken = strToken;
    }
    void onActionInvoked(quint32 nId, const QString& strKey) {
        if (nId == m_nId && !m_bWithdrawn)
            m_pressed(strKey, std::exchange(m_strToken, QString()));
    }
    void onClosed(quint32 nId) {
        if (nId == m_nId)
            m_nId.reset();
    }

private:
    void listen(const char* strSignal, const char* pSlot) {
        m_bus.connect(kService, kServicePath, kService, QLatin1String(strSignal), this, pSlot);
    }
    template <typename Answered> void ask(const QDBusMessage& call, Answered answered) {
        m_bAsking = true;
        auto* const pWatcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
        connect(pWatcher, &QDBusPendingCallWatcher::finished, this, [this, pWatcher, answered] {
            pWatcher->deleteLater();
            m_bAsking = false;
            answered(*pWatcher);
        });
    }
    void close() {
        if (m_nId)
            m_bus.send(toService("CloseNotification") << *std::exchange(m_nId, std::nullopt));
        deleteLater();
    }

    QDBusConnection m_bus;
    const NotificationPressed m_pressed;
    std::optional<quint32> m_nId; // while it is shown
    QString m_strToken;           // comes before the press that it is for
    bool m_bAsking = false;       // an answer is pending
    bool m_bWithdrawn = false;
};

namespace {

/// What the caller holds on to.
class ShownNotification : public Notification {
public:
    explicit ShownNotification(NotificationRequest* pRequest) : m_request(pRequest) {}
    ~ShownNotification() override {
        if (m_request != nullptr)
            m_request->withdraw();
    }

private:
    const QPointer<NotificationRequest>
        m_request; // null without a bus, and once the application object is gone
};

} // namespace

void showNotification(const QString& strSummary, const QString& strBody) {
    if (const std::optional<QDBusConnection> bus = sessionBus())
        bus->send(notifyCall(strSummary, strBody, {}));
}

std::unique_ptr<Notification> showNotification(const QString& strSummary, const QString& strBody,
                                               const QList<NotificationAction>& actions,
                                               NotificationPressed pressed) {
    const std::optional<QDBusConnection> bus = sessionBus();
    if (!bus)
        return std::make_unique<ShownNotification>(nullptr);
    auto* const pRequest = new NotificationRequest(*bus, std::move(pressed));
    pRequest->show(strSummary, strBody, actions);
    return std::make_unique<ShownNotification>(pRequest);
}

} // namespace vellux

#include "Notification.moc"
