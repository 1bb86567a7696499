#include "adapters/dbus/Notification.h"

#include "adapters/ApplicationId.h"
#include "adapters/dbus/Buses.h"

#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

namespace vellux {

void showNotification(const QString& strSummary, const QString& strBody) {
    const std::optional<QDBusConnection> bus = sessionBus();
    if (!bus)
        return;
    const QString strId = QString::fromLatin1(kApplicationId);
    constexpr quint32 kReplacesNone = 0;
    constexpr qint32 kServersOwnTime = -1;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    call << QStringLiteral("Vellux") << kReplacesNone << strId << strSummary
         << strBody.toHtmlEscaped() // a body is markup
         << QStringList() << QVariantMap{{QStringLiteral("desktop-entry"), strId}} << kServersOwnTime;
    bus->send(call);
}

} // namespace vellux
