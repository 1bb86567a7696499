// The activations that a process's single instance has been sent.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

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

/// Keeps activations until there is a handler, and calls it from the main thread's loop, after the sender has
/// been answered. Main thread.
class Activations {
public:
    /// Sets the handler of all activations, including those that came before.
    void setActivated(std::function<void(const QString& strToken)> activated) {
        m_activated = std::move(activated);
        deliverSoon();
    }
    /// Adds an activation; "" for one without a token.
    void add(const QString& strToken) {
        m_pending.append(strToken);
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

    std::function<void(const QString& strToken)> m_activated;
    QStringList m_pending;
    QObject m_context; // its destruction drops what is queued
};

} // namespace vellux
