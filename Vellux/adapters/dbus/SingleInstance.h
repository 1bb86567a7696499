// One running program per user session.
#pragma once

#include "adapters/dbus/Activations.h"
#include "model/ProgramStatus.h"

#include <functional>
#include <memory>

namespace vellux {

/// Lets one process per session run: the one that holds a lock file, with a local socket beside it, and the
/// name on the session bus under which org.freedesktop.Application is answered. One of the two is enough;
/// where neither is available, every start keeps running. Main thread.
class SingleInstance {
public:
    /// What a start does when another process runs.
    enum class Second { ShowsTheFirst, JustEnds };

    /// Claims both, once the application object exists. Null when another process holds them: it has then
    /// been asked to show its window, with the activation token of this process's environment, unless this
    /// start just ends. Blocks for up to two seconds.
    [[nodiscard]] static std::unique_ptr<SingleInstance> claim(Second second = Second::ShowsTheFirst);
    /// Releases both.
    virtual ~SingleInstance() = default;
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Called on the main thread's loop for each activation, including those that came before.
    virtual void setActivated(std::function<void(const Activation& activation)> activated) = 0;

    /// What is told from now on to those who ask, and on the bus to those who listen. Returns at once.
    virtual void setStatus(const ProgramStatus& status) = 0;

protected:
    SingleInstance() = default;
};

} // namespace vellux
