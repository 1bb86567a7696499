// One running program per user session.
#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace vellux {

/// The place that only one process of a session holds: a lock file, with a local socket beside it, and the
/// name on the session bus, under which org.freedesktop.Application is answered. It needs one of the two;
/// where neither is to be had, each start is on its own. Main thread.
class SingleInstance {
public:
    /// Asks for the place, after the application object has been made. Null when another process holds it:
    /// that one has then been asked to show itself, with the activation token of this process's environment.
    /// Blocks two seconds at most.
    static std::unique_ptr<SingleInstance> claim();
    /// Gives the place up.
    virtual ~SingleInstance() = default;
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Called on the main thread's loop for each activation, with the token that came with it ("" without
    /// one); also for those that came before.
    virtual void setActivated(std::function<void(const QString& strToken)> activated) = 0;

protected:
    SingleInstance() = default;
};

} // namespace vellux
