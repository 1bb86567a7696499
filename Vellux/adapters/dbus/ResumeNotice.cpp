#include "adapters/dbus/ResumeNotice.h"

#include "adapters/dbus/Buses.h"

#include <QObject>
#include <QString>

#include <utility>

namespace vellux {

class ResumeListener : public QObject {
    Q_OBJECT
public:
    explicit ResumeListener(std::function<void()> resumed) : m_resumed(std::move(resumed)) {
        if (std::optional<QDBusConnection> bus = systemBus())
            bus->connect(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                         QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"),
                         this, SLOT(onPrepareForSleep(bool)));
    }

private Q_SLOTS:
    /// True before the system sleeps, false after it has woken.
    void onPrepareForSleep(bool bAboutToSleep) {
        if (!bAboutToSleep)
            m_resumed();
    }

private:
    const std::function<void()> m_resumed;
};

ResumeNotice::ResumeNotice(std::function<void()> resumed)
    : m_listener(std::make_unique<ResumeListener>(std::move(resumed))) {}

ResumeNotice::~ResumeNotice() = default;

} // namespace vellux

#include "ResumeNotice.moc"
