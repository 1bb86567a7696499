#include "adapters/dbus/InstanceName.h"

#include "adapters/ApplicationId.h"
#include "adapters/dbus/StatusInterface.h"

#include <QDBusMessage>
#include <QDBusReply>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <algorithm>

namespace vellux {

namespace {

const QString kInterface = QStringLiteral("org.freedesktop.Application");
const QString kActivationToken = QStringLiteral("activation-token");
const QString kStartupId = QStringLiteral("desktop-startup-id");

constexpr int kLongestReleaseMs = 1000; // the bus itself answers

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

} // namespace

/// The interface as the bus sees it. It opens no files: to open some shows the program.
class ApplicationObject : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    explicit ApplicationObject(Activations& activations) : m_activations(activations) {}

    Q_SCRIPTABLE void Activate(const QVariantMap& platformData) { add(QString(), platformData); }
    Q_SCRIPTABLE void Open(const QStringList& /*uris*/, const QVariantMap& platformData) {
        Activate(platformData);
    }
    Q_SCRIPTABLE void ActivateAction(const QString& strAction, const QVariantList& /*parameters*/,
                                     const QVariantMap& platformData) {
        add(strAction, platformData);
    }

private:
    void add(const QString& strAction, const QVariantMap& platformData) {
        const LaunchTokens tokens{platformData.value(kActivationToken).toString(),
                                  platformData.value(kStartupId).toString()};
        m_activations.add({tokens.best(), strAction});
    }

    Activations& m_activations;
};

// The object is registered before the name, so that the name is never there without it.
InstanceName::InstanceName(const QDBusConnection& bus, Activations& activations, const ProgramStatus& status)
    : m_bus(bus), m_object(std::make_unique<ApplicationObject>(activations)),
      m_status(*new StatusInterface(*m_object, status)) {
    m_bus.registerObject(objectPath(), m_object.get(),
                         QDBusConnection::ExportScriptableInvokables | QDBusConnection::ExportAdaptors);
}

// The name is released first. An activation that is still on its way then finds no object, and its sender
// takes the name.
InstanceName::~InstanceName() {
    if (m_bHeld)
        m_bus.call(toBus("ReleaseName") << busName(), QDBus::Block, kLongestReleaseMs);
    m_bus.unregisterObject(objectPath());
}

std::optional<bool> InstanceName::request(const QDeadlineTimer& deadline) {
    constexpr quint32 kDoNotQueue = 4; // a request's flag
    constexpr quint32 kPrimaryOwner = 1;
    const QDBusReply<quint32> result =
        callUntil(deadline, m_bus, toBus("RequestName") << busName() << kDoNotQueue);
    if (!result.isValid())
        return std::nullopt;
    m_bHeld = result.value() == kPrimaryOwner;
    return m_bHeld;
}

void InstanceName::tellStatusSince(const ProgramStatus& before) {
    m_status.tellChanges(m_bus, objectPath(), before);
}

bool activateNameOwner(const QDBusConnection& bus, const LaunchTokens& tokens,
                       const QDeadlineTimer& deadline) {
    QVariantMap platformData;
    if (!tokens.strActivationToken.isEmpty())
        platformData.insert(kActivationToken, tokens.strActivationToken);
    if (!tokens.strStartupId.isEmpty())
        platformData.insert(kStartupId, tokens.strStartupId);
    QDBusMessage call =
        QDBusMessage::createMethodCall(busName(), objectPath(), kInterface, QStringLiteral("Activate"));
    call.setAutoStartService(false); // this process is the one to start
    return callUntil(deadline, bus, call << platformData).type() == QDBusMessage::ReplyMessage;
}

std::optional<ProgramStatus> askNameOwner(const QDBusConnection& bus, const QDeadlineTimer& deadline) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        busName(), objectPath(), QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"));
    call.setAutoStartService(false);
    const QDBusReply<QVariantMap> properties =
        callUntil(deadline, bus, call << QString::fromLatin1(kStatusInterface));
    return properties.isValid() ? std::optional(statusOf(properties.value())) : std::nullopt;
}

} // namespace vellux

#include "InstanceName.moc"
