#include "adapters/dbus/ProcessActivity.h"

#include "adapters/dbus/Buses.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QPointer>
#include <QVariantMap>

namespace vellux {

namespace {

constexpr quint32 kInhibitSuspend = 4; // the portal's flag

QDBusMessage portalCall(const QString& strPath, const char* strInterface, const char* strMethod) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"), strPath,
                                          QLatin1String(strInterface), QLatin1String(strMethod));
}

/// One inhibition, requested or held. It outlives its reference until a pending answer has come and what that
/// brought has been released; at the latest it ends with its parent, the application object.
class Inhibition : public QObject {
public:
    explicit Inhibition(const std::string& strReason)
        : QObject(QCoreApplication::instance()), m_strReason(QString::fromStdString(strReason)) {}

    void begin() {
        if (const std::optional<QDBusConnection> bus = sessionBus())
            askPortal(*bus);
        else
            askLogind();
    }

    void release() {
        m_bReleased = true;
        if (m_bAsking)
            return; // the answer finds it released
        if (!m_strRequest.isEmpty())
            closeRequest();
        m_descriptor = QDBusUnixFileDescriptor(); // closes logind's
        deleteLater();                            // this may be called from a child's signal
    }

private:
    /// Calls, and hands the answer to `answered` on the main thread's loop.
    template <typename Answered>
    void ask(const QDBusConnection& bus, const QDBusMessage& call, Answered answered) {
        m_bAsking = true;
        auto* const pWatcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
        QObject::connect(pWatcher, &QDBusPendingCallWatcher::finished, this, [this, pWatcher, answered] {
            pWatcher->deleteLater();
            m_bAsking = false;
            answered(*pWatcher);
            if (m_bReleased && !m_bAsking)
                release();
        });
    }

    void askPortal(const QDBusConnection& bus) {
        static quint64 nRequests = 0;
        QDBusMessage call = portalCall(QStringLiteral("/org/freedesktop/portal/desktop"),
                                       "org.freedesktop.portal.Inhibit", "Inhibit");
        call << QString() // no window
             << kInhibitSuspend
             << QVariantMap{{QStringLiteral("reason"), m_strReason},
                            {QStringLiteral("handle_token"), QStringLiteral("vellux%1").arg(++nRequests)}};
        ask(bus, call, [this](const QDBusPendingCall& answer) {
            const QDBusPendingReply<QDBusObjectPath> request = answer;
            if (request.isValid())
                m_strRequest = request.value().path();
            else if (!m_bReleased)
                askLogind();
        });
    }

    void askLogind() {
        const std::optional<QDBusConnection> bus = systemBus();
        if (!bus)
            return;
        QDBusMessage call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
            QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
        call << QStringLiteral("idle") << QStringLiteral("Vellux") << m_strReason << QStringLiteral("block");
        ask(*bus, call, [this](const QDBusPendingCall& answer) {
            const QDBusPendingReply<QDBusUnixFileDescriptor> descriptor = answer;
            if (descriptor.isValid())
                m_descriptor = descriptor.value(); // close-on-exec
        });
    }

    void closeRequest() {
        if (const std::optional<QDBusConnection> bus = sessionBus())
            bus->send(portalCall(m_strRequest, "org.freedesktop.portal.Request", "Close"));
    }

    const QString m_strReason;
    bool m_bAsking = false;   // an answer is pending
    bool m_bReleased = false; // there is no reference any more
    QString m_strRequest;     // the portal's, while it holds
    QDBusUnixFileDescriptor m_descriptor;
};

/// What the caller holds on to.
class Reference {
public:
    explicit Reference(Inhibition* pInhibition) : m_inhibition(pInhibition) {}
    ~Reference() {
        if (m_inhibition != nullptr)
            m_inhibition->release();
    }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;

private:
    const QPointer<Inhibition> m_inhibition; // null once the application object is gone
};

} // namespace

std::optional<ProcessActivity> beginProcessActivity(const std::string& strReason) {
    if (!sessionBus() && !systemBus())
        return std::nullopt;
    auto* const pInhibition = new Inhibition(strReason);
    auto reference = std::make_shared<Reference>(pInhibition);
    pInhibition->begin();
    return reference;
}

} // namespace vellux
