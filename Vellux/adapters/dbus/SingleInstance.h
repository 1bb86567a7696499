// One running program per user session.
#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace vellux {

/// Lets one process per session run: the one that holds a lock file, with a local socket beside it, and the
/// name on the session bus under which org.freedesktop.Application is answered. One of the two is enough;
/// where neither is available, every start keeps running. Main thread.
class SingleInstance {
public:
    /// Claims both, once the application object exists. Null when another process holds them: it has then
    /// been asked to show its window, with the activation token of this process's environment. Blocks for up
    /// to two seconds.
    [[nodiscard]] static std::unique_ptr<SingleInstance> claim();
    /// Releases both.
    virtual ~SingleInstance() = default;
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Called on the main thread's loop for each activation, with its token ("" for none), including those
    /// that came before.
    virtual void setActivated(std::function<void(const QString& strToken)> activated) = 0;

protected:
    SingleInstance() = default;
};

} // namespace vellux
