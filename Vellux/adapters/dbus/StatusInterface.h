// The program's status on the session bus.
#pragma once

#include "model/ProgramStatus.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QString>
#include <QVariantMap>

namespace vellux {

inline constexpr const char* kStatusInterface = "org.vellux.Vellux.Status1";

/// The interface as the bus sees it, which docs/status-interface.md describes: read-only properties, on the
/// object that it belongs to. Main thread.
class StatusInterface : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.vellux.Vellux.Status1")
    Q_PROPERTY(QString State READ state)
    Q_PROPERTY(QString Presence READ presence)
    Q_PROPERTY(bool OnCall READ isOnCall)
    Q_PROPERTY(QString Lamp READ lamp)
    Q_PROPERTY(QString Light READ light)
public:
    /// Owned by the object. `status`, which outlives it, is read whenever somebody asks.
    StatusInterface(QObject& object, const ProgramStatus& status);

    QString state() const;
    QString presence() const;
    bool isOnCall() const;
    QString lamp() const;
    QString light() const;

    /// Signals the properties that differ from those before, all at once; nothing if none does. Doesn't
    /// block, and does nothing on a bus that has gone.
    void tellChanges(const QDBusConnection& bus, const QString& strPath, const ProgramStatus& before) const;

private:
    const ProgramStatus& m_status;
};

/// The status as its properties, by name.
QVariantMap propertiesOf(const ProgramStatus& status);
/// The reverse; what is missing is empty.
ProgramStatus statusOf(const QVariantMap& properties);

} // namespace vellux
