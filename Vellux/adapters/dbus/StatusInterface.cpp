#include "adapters/dbus/StatusInterface.h"

#include <QDBusMessage>
#include <QStringList>

namespace vellux {

namespace {

// The properties that are text, and what they hold.
constexpr struct {
    const char* strName;
    std::string ProgramStatus::*pText;
} kTexts[] = {
    {"State", &ProgramStatus::strState},
    {"Presence", &ProgramStatus::strPresence},
    {"Lamp", &ProgramStatus::strLamp},
    {"Light", &ProgramStatus::strLight},
};
const QString kOnCall = QStringLiteral("OnCall");

} // namespace

QVariantMap propertiesOf(const ProgramStatus& status) {
    QVariantMap properties{{kOnCall, status.bOnCall}};
    for (const auto& text : kTexts)
        properties.insert(QString::fromLatin1(text.strName), QString::fromStdString(status.*text.pText));
    return properties;
}

ProgramStatus statusOf(const QVariantMap& properties) {
    ProgramStatus status;
    status.bOnCall = properties.value(kOnCall).toBool();
    for (const auto& text : kTexts)
        status.*text.pText = properties.value(QString::fromLatin1(text.strName)).toString().toStdString();
    return status;
}

StatusInterface::StatusInterface(QObject& object, const ProgramStatus& status)
    : QDBusAbstractAdaptor(&object), m_status(status) {}

QString StatusInterface::state() const {
    return QString::fromStdString(m_status.strState);
}

QString StatusInterface::presence() const {
    return QString::fromStdString(m_status.strPresence);
}

bool StatusInterface::isOnCall() const {
    return m_status.bOnCall;
}

QString StatusInterface::lamp() const {
    return QString::fromStdString(m_status.strLamp);
}

QString StatusInterface::light() const {
    return QString::fromStdString(m_status.strLight);
}

void StatusInterface::tellChanges(const QDBusConnection& bus, const QString& strPath,
                                  const ProgramStatus& before) const {
    QVariantMap changed = propertiesOf(m_status);
    const QVariantMap unchanged = propertiesOf(before);
    changed.removeIf(
        [&](const auto& property) { return unchanged.value(property.key()) == property.value(); });
    if (changed.isEmpty())
        return;
    QDBusMessage signal = QDBusMessage::createSignal(
        strPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"));
    bus.send(signal << QString::fromLatin1(kStatusInterface) << changed << QStringList());
}

} // namespace vellux
