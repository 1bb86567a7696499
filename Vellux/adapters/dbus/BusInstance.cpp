#include "adapters/dbus/BusInstance.h"

#include "adapters/dbus/ApplicationId.h"

#include <QDBusMessage>
#include <QDBusReply>
#include <QObject>
#include <QStringList>
#include <QThread>
#include <QVariantMap>

#include <algorithm>
#include <utility>

namespace vellux {

namespace {

const QString kInterface = QStringLiteral("org.freedesktop.Application");
const QString kActivationToken = QStringLiteral("activation-token");
const QString kStartupId = QStringLiteral("desktop-startup-id");

constexpr unsigned long kPauseMs = 20; // between two attempts

QString busName() {
    return QString::fromLatin1(kApplicationId);
}

/// The object path that belongs to the name: its dots are slashes.
QString objectPath() {
    return QLatin1Char('/') + busName().replace(QLatin1Char('.'), QLatin1Char('/'));
}

/// Calls, and waits until the deadline at most.
QDBusMessage callUntil(const QDeadlineTimer& deadline, const QDBusConnection& bus, const QDBusMessage& call) {
    return bus.call(call, QDBus::Block, static_cast<int>(std::max<qint64>(deadline.remainingTime(), 1)));
}

QDBusMessage toBus(const char* strMethod) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                          QStringLiteral("/org/freedesktop/DBus"),
                                          QStringLiteral("org.freedesktop.DBus"), QLatin1String(strMethod));
}

/// The interface as the bus sees it. There are no files to open and no actions: everything shows the program.
class ApplicationObject : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    explicit ApplicationObject(Activations& activations) : m_activations(activations) {}

    Q_SCRIPTABLE void Activate(const QVariantMap& platformData) {
        m_activations.add(LaunchTokens{platformData.value(kActivationToken).toString(),
                                       platformData.value(kStartupId).toString()}
                              .best());
    }
    Q_SCRIPTABLE void Open(const QStringList& /*uris*/, const QVariantMap& platformData) {
        Activate(platformData);
    }
    Q_SCRIPTABLE void ActivateAction(const QString& /*strAction*/, const QVariantList& /*parameters*/,
                                     const QVariantMap& platformData) {
        Activate(platformData);
    }

private:
    Activations& m_activations;
};

class BusInstance : public SingleInstance {
public:
    /// Exports the object. It is there before the name, so that nobody finds the one without the other.
    explicit BusInstance(const QDBusConnection& bus) : m_bus(bus) {
        m_bus.registerObject(objectPath(), &m_object, QDBusConnection::ExportScriptableInvokables);
    }
    ~BusInstance() override {
        // The name goes first. An activation that is still on its way then finds no object, and whoever sent it
        // takes the name.
        if (m_bHoldsName)
            m_bus.call(toBus("ReleaseName") << busName(), QDBus::Block, kLongestReleaseMs);
        m_bus.unregisterObject(objectPath());
    }

    void setActivated(std::function<void(const QString& strToken)> activated) override {
        m_activations.setActivated(std::move(activated));
    }

    /// Asks for the name. Absent when the bus refuses, else whether it is ours now.
    std::optional<bool> requestName(const QDeadlineTimer& deadline) {
        constexpr quint32 kDoNotQueue = 4; // a request's flag
        constexpr quint32 kPrimaryOwner = 1;
        const QDBusReply<quint32> result =
            callUntil(deadline, m_bus, toBus("RequestName") << busName() << kDoNotQueue);
        if (!result.isValid())
            return std::nullopt;
        m_bHoldsName = result.value() == kPrimaryOwner;
        return m_bHoldsName;
    }

private:
    static constexpr int kLongestReleaseMs = 1000; // the bus itself answers

    QDBusConnection m_bus;
    Activations m_activations;
    ApplicationObject m_object{m_activations};
    bool m_bHoldsName = false;
};

/// Whether the name's owner has taken the activation.
bool activateOwner(const QDBusConnection& bus, const LaunchTokens& tokens, const QDeadlineTimer& deadline) {
    QVariantMap platformData;
    if (!tokens.strActivationToken.isEmpty())
        platformData.insert(kActivationToken, tokens.strActivationToken);
    if (!tokens.strStartupId.isEmpty())
        platformData.insert(kStartupId, tokens.strStartupId);
    QDBusMessage call =
        QDBusMessage::createMethodCall(busName(), objectPath(), kInterface, QStringLiteral("Activate"));
    call.setAutoStartService(false); // who starts it is this process
    return callUntil(deadline, bus, call << platformData).type() == QDBusMessage::ReplyMessage;
}

} // namespace

std::optional<std::unique_ptr<SingleInstance>>
claimBusName(const QDBusConnection& bus, const LaunchTokens& tokens, const QDeadlineTimer& deadline) {
    auto instance = std::make_unique<BusInstance>(bus);
    for (bool bOwned = false;; bOwned = true) {
        const std::optional<bool> bOurs = instance->requestName(deadline);
        if (!bOurs && bOwned)
            return nullptr; // no time was left for the bus; its timers may be early by a twentieth
        if (!bOurs)
            return std::nullopt;
        if (*bOurs)
            return instance;
        // An owner that is just ending, or gone, answers with an error: the name will be free.
        if (activateOwner(bus, tokens, deadline) || deadline.hasExpired())
            return nullptr;
        QThread::msleep(kPauseMs);
    }
}

} // namespace vellux

#include "BusInstance.moc"
