#include "adapters/dbus/SingleInstance.h"

#include "adapters/dbus/Buses.h"
#include "adapters/dbus/InstanceLock.h"
#include "adapters/dbus/InstanceName.h"

#include <QDeadlineTimer>
#include <QThread>

#include <optional>
#include <utility>

namespace vellux {

namespace {

constexpr qint64 kLongestClaimMs = 2000;
constexpr unsigned long kPauseMs = 20; // between two attempts

// Each start takes the lock first and the bus name second, and releases them in the opposite order.
//
// At most one keeps running: of those with the same runtime directory only one holds the lock, and of those
// on the same bus only one owns the name. Two keep running only if they share neither.
//
// At least one keeps running: a start ends only when another answers it, or hangs. Answers come from the loop
// of one that keeps running; the socket is silent while its owner still waits for the name, and closes if
// that one then ends. Whoever owns the name keeps running, so an owner never waits for another start.
class HeldInstance : public SingleInstance {
public:
    HeldInstance(LaunchTokens tokens, const QDeadlineTimer& deadline)
        : m_tokens(std::move(tokens)), m_deadline(deadline) {}

    void setActivated(std::function<void(const QString& strToken)> activated) override {
        m_activations.setActivated(std::move(activated));
    }

    /// Takes the lock. False when another process holds it and has been activated, or has not answered in
    /// time. True without the lock where it is unavailable: then the name alone decides.
    bool takeLock() {
        for (;; QThread::msleep(kPauseMs)) {
            const std::optional<bool> bOurs = m_lock.tryLock();
            if (bOurs == true)
                return true;
            if (m_lock.activateHolder(m_tokens, m_deadline))
                return false;
            if (!bOurs)
                return true;
            // The holder doesn't listen yet, or no longer, or can't; or a crash has just ended it.
            if (m_deadline.hasExpired())
                return false;
            const std::optional<QDBusConnection> bus = sessionBus();
            if (bus && activateNameOwner(*bus, m_tokens, m_deadline))
                return false;
        }
    }

    /// Takes the name. Same results; true without the name where there is no bus, or where the bus refuses
    /// names to this process.
    bool takeName() {
        const std::optional<QDBusConnection> bus = sessionBus();
        if (!bus)
            return true;
        m_name.emplace(*bus, m_activations);
        for (bool bOwned = false;; bOwned = true) {
            const std::optional<bool> bOurs = m_name->request(m_deadline);
            if (bOurs == true)
                return true;
            if (!bOurs && bOwned && bus->isConnected())
                return false; // no time is left; coarse timers fire up to 5 % early
            if (!bOurs) {
                m_name.reset();
                return true;
            }
            // An owner that is just ending, or gone, answers with an error: the name will be free.
            if (activateNameOwner(*bus, m_tokens, m_deadline) || m_deadline.hasExpired())
                return false;
            QThread::msleep(kPauseMs);
        }
    }

private:
    const LaunchTokens m_tokens;
    const QDeadlineTimer m_deadline;
    Activations m_activations;
    InstanceLock m_lock{m_activations};
    std::optional<InstanceName> m_name; // given up before the lock
};

} // namespace

std::unique_ptr<SingleInstance> SingleInstance::claim() {
    auto instance = std::make_unique<HeldInstance>(LaunchTokens{qEnvironmentVariable("XDG_ACTIVATION_TOKEN"),
                                                                qEnvironmentVariable("DESKTOP_STARTUP_ID")},
                                                   QDeadlineTimer(kLongestClaimMs));
    if (!instance->takeLock() || !instance->takeName())
        return nullptr;
    return instance;
}

} // namespace vellux
