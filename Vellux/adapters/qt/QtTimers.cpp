#include "adapters/qt/QtTimers.h"

#include <QTimer>

#include <utility>

namespace vellux {

TimerRef QtTimers::callAfter(std::chrono::milliseconds delay, std::function<void()> call) {
    // Deleted by the loop, since the call may drop the last reference to its own timer.
    const std::shared_ptr<QTimer> timer(new QTimer, [](QTimer* pTimer) {
        pTimer->stop();
        pTimer->deleteLater();
    });
    timer->setSingleShot(true);
    QObject::connect(timer.get(), &QTimer::timeout, timer.get(), std::move(call));
    timer->start(delay);
    return timer;
}

} // namespace vellux
