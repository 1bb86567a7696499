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
    HeldInstance(LaunchTokens tokens, Second second, const QDeadlineTimer& deadline)
        : m_tokens(std::move(tokens)), m_second(second), m_deadline(deadline) {}

    void setActivated(std::function<void(const Activation& activation)> activated) override {
        m_activations.setActivated(std::move(activated));
    }

    void setStatus(const ProgramStatus& status) override {
        const ProgramStatus before = std::exchange(m_status, status);
        if (m_name)
            m_name->tellStatusSince(before);
    }

    /// Takes the lock. False when another process holds it and has been activated, or has not answered in
    /// time. True without the lock where it is unavailable: then the name alone decides.
    bool takeLock() {
        for (;; QThread::msleep(kPauseMs)) {
            const std::optional<bool> bOurs = m_lock.tryLock();
            if (bOurs == true)
                return true;
            // The answer tells that it runs, and is of no other use.
            const bool bShow = m_second == Second::ShowsTheFirst;
            const QString strMessage = bShow ? m_tokens.best() : QString::fromLatin1(kStatusQuestion);
            const HolderAnswer::Kind answer = tellHolder(strMessage, m_deadline).kind;
            if (answer == HolderAnswer::Kind::Answered || answer == HolderAnswer::Kind::Silent)
                return false;
            if (!bOurs)
                return true;
            // The holder doesn't listen yet, or no longer, or can't; or a crash has just ended it.
            if (m_deadline.hasExpired())
                return false;
            const std::optional<QDBusConnection> bus = sessionBus();
            if (bus && reachNameOwner(*bus))
                return false;
        }
    }

    /// Takes the name. Same results; true without the name where there is no bus, or where the bus refuses
    /// names to this process.
    bool takeName() {
        const std::optional<QDBusConnection> bus = sessionBus();
        if (!bus)
            return true;
        m_name.emplace(*bus, m_activations, m_status);
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
            if (reachNameOwner(*bus) || m_deadline.hasExpired())
                return false;
            QThread::msleep(kPauseMs);
        }
    }

private:
    /// Whether it answers, and so keeps running.
    bool reachNameOwner(const QDBusConnection& bus) const {
        return m_second == Second::ShowsTheFirst ? activateNameOwner(bus, m_tokens, m_deadline)
                                                 : askNameOwner(bus, m_deadline).has_value();
    }

    const LaunchTokens m_tokens;
    const Second m_second;
    const QDeadlineTimer m_deadline;
    ProgramStatus m_status;
    Activations m_activations;
    InstanceLock m_lock{m_activations, m_status};
    std::optional<InstanceName> m_name; // given up before the lock
};

} // namespace

std::unique_ptr<SingleInstance> SingleInstance::claim(Second second) {
    auto instance = std::make_unique<HeldInstance>(LaunchTokens{qEnvironmentVariable("XDG_ACTIVATION_TOKEN"),
                                                                qEnvironmentVariable("DESKTOP_STARTUP_ID")},
                                                   second, QDeadlineTimer(kLongestClaimMs));
    if (!instance->takeLock() || !instance->takeName())
        return nullptr;
    return instance;
}

} // namespace vellux
