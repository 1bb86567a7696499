// The activations that a process's single instance has been sent.
#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <utility>

namespace vellux {

/// What a second start hands over: the token with which its launcher lets a window come to the front; "" for
/// none.
struct LaunchTokens {
    QString strActivationToken; ///< XDG_ACTIVATION_TOKEN
    QString strStartupId;       ///< DESKTOP_STARTUP_ID, its predecessor on X11
    /// The one to use.
    QString best() const { return strActivationToken.isEmpty() ? strStartupId : strActivationToken; }
};

/// What the program is asked to do.
struct Activation {
    QString strToken;       ///< "" for none
    QString strAction = {}; ///< one of the desktop entry's actions; "" to show the window
};

/// Keeps activations until there is a handler, and calls it from the main thread's loop, after the sender has
/// been answered. Main thread.
class Activations {
public:
    /// Sets the handler of all activations, including those that came before.
    void setActivated(std::function<void(const Activation& activation)> activated) {
        m_activated = std::move(activated);
        deliverSoon();
    }
    void add(const Activation& activation) {
        m_pending.append(activation);
        deliverSoon();
    }

private:
    void deliverSoon() {
        QMetaObject::invokeMethod(
            &m_context, [this] { deliver(); }, Qt::QueuedConnection);
    }
    void deliver() {
        while (m_activated && !m_pending.isEmpty())
            m_activated(m_pending.takeFirst());
    }

    std::function<void(const Activation& activation)> m_activated;
    QList<Activation> m_pending;
    QObject m_context; // its destruction drops what is queued
};

} // namespace vellux
